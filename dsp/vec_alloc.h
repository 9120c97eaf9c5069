// SPDX-License-Identifier: MIT
// 64-byte aligned buffers and the common base of the kernels' state objects.
#pragma once

#include <memory>

// Memory aligned to 64 bytes, or null if bytes < 1, if bytes + 68 overflows an int, or if the
// heap is exhausted. The block is bytes + 68 from malloc; the result is (base + 67) & ~63 and
// the word just before it holds base, so the result is at least 4 bytes into the block.
void* vecAlloc(int bytes);
// Frees what vecAlloc returned; null is ignored.
void vecFree(void* ptr);

// Base of the filter, FFT and random generator states; they are freed by vecStateFree.
struct VecState {
  virtual ~VecState() = default;
};
// Frees a state object; null is ignored.
void vecStateFree(VecState* state);

struct VecStateDeleter {
  void operator()(VecState* state) const { vecStateFree(state); }
};
template <class T>
using VecStatePtr = std::unique_ptr<T, VecStateDeleter>;

// Typed owner of a vecAlloc buffer.
struct VecFreeDeleter {
  void operator()(void* ptr) const { vecFree(ptr); }
};
template <class T>
using VecArray = std::unique_ptr<T[], VecFreeDeleter>;

// count elements of T, uninitialised; null when count < 1 or the byte count overflows an int.
template <class T>
VecArray<T> vecAllocArray(int count) {
  if (count < 1 || static_cast<long long>(count) * sizeof(T) > 0x7fffffffLL) return nullptr;
  return VecArray<T>(static_cast<T*>(vecAlloc(static_cast<int>(count * sizeof(T)))));
}
