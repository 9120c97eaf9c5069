// SPDX-License-Identifier: MIT
// Pooled buffers of I/Q samples on their way from krtSubmitIQ to the recording.
#include "krt/sample_block.h"

namespace krtsim {

namespace {
constexpr size_t kMaxFreeBytes = size_t(256) << 20;  // what the pool keeps for reuse
constexpr size_t kBytesPerSample = 2 * sizeof(float);
}  // namespace

BlockPool& BlockPool::instance() {
  static BlockPool* pool = new BlockPool();  // never destroyed: blocks may outlive main
  return *pool;
}

std::shared_ptr<SampleBlock> BlockPool::take(int64_t count) {
  std::unique_ptr<SampleBlock> block;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    // Best fit among the free blocks, so small submits do not pin big blocks.
    size_t best = free_.size();
    for (size_t i = 0; i < free_.size(); ++i) {
      if (free_[i]->capacity() >= count &&
          (best == free_.size() || free_[i]->capacity() < free_[best]->capacity())) {
        best = i;
      }
    }
    if (best != free_.size()) {
      block = std::move(free_[best]);
      free_[best] = std::move(free_.back());
      free_.pop_back();
      freeBytes_ -= static_cast<size_t>(block->capacity()) * kBytesPerSample;
    }
  }
  if (!block) block = std::make_unique<SampleBlock>(count > 0 ? count : 1);
  return std::shared_ptr<SampleBlock>(block.release(), [this](SampleBlock* b) { giveBack(b); });
}

void BlockPool::giveBack(SampleBlock* block) {
  std::unique_ptr<SampleBlock> owned(block);
  const size_t bytes = static_cast<size_t>(block->capacity()) * kBytesPerSample;
  std::lock_guard<std::mutex> lock(mutex_);
  if (freeBytes_ + bytes > kMaxFreeBytes) return;  // over the pool's limit: let it go
  freeBytes_ += bytes;
  free_.push_back(std::move(owned));
}

}  // namespace krtsim
