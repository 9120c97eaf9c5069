// SPDX-License-Identifier: MIT
// Pooled buffers of I/Q samples on their way from krtSubmitIQ to the recording.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace krtsim {

// Uninitialised storage for interleaved I/Q floats; capacity in complex samples.
class SampleBlock {
public:
  explicit SampleBlock(int64_t capacity)
      : data_(new float[2 * static_cast<size_t>(capacity)]), capacity_(capacity) {}
  float* data() { return data_.get(); }
  const float* data() const { return data_.get(); }
  int64_t capacity() const { return capacity_; }

private:
  std::unique_ptr<float[]> data_;
  int64_t capacity_;
};

// Process-wide pool: blocks come back when the last reference (queue or writer) lets go, so
// that the steady streaming loop allocates and page-faults nothing.
class BlockPool {
public:
  static BlockPool& instance();

  // A block of at least count samples; returned to the pool when the pointer is released.
  std::shared_ptr<SampleBlock> take(int64_t count);

private:
  void giveBack(SampleBlock* block);

  std::mutex mutex_;
  std::vector<std::unique_ptr<SampleBlock>> free_;
  size_t freeBytes_ = 0;
};

}  // namespace krtsim
