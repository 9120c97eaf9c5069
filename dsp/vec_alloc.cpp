// SPDX-License-Identifier: MIT
// 64-byte aligned buffers and the common base of the kernels' state objects.
#include "dsp/vec_alloc.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {
constexpr int kSlack = 68;  // 63 to reach the boundary plus room for the stored base
}

void* vecAlloc(int bytes) {
  if (bytes < 1 || bytes > INT_MAX - kSlack) return nullptr;
  void* base = std::malloc(static_cast<size_t>(bytes) + kSlack);
  if (!base) return nullptr;
  const uintptr_t result = (reinterpret_cast<uintptr_t>(base) + 67) & ~uintptr_t(63);
  // malloc aligns to at least a pointer, so result - base >= sizeof(void*) and the word fits.
  std::memcpy(reinterpret_cast<char*>(result) - sizeof(void*), &base, sizeof(void*));
  return reinterpret_cast<void*>(result);
}

void vecFree(void* ptr) {
  if (!ptr) return;
  void* base;
  std::memcpy(&base, static_cast<char*>(ptr) - sizeof(void*), sizeof(void*));
  std::free(base);
}

void vecStateFree(VecState* state) { delete state; }
