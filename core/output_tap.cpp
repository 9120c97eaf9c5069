// SPDX-License-Identifier: MIT
// Snapshots of what is handed to the device, passed from the streaming thread to the monitor.
#include "core/output_tap.h"

#include <algorithm>
#include <cstring>

namespace {
constexpr int freshBit = 4;
}  // namespace

void OutputTap::setEnabled(bool on) {
  if (on && buffers[0].samples.empty())
    for (OutputSnapshot& slot : buffers) slot.samples.resize(snapshotSamples);
  enabled_.store(on, std::memory_order_release);
}

const OutputSnapshot* OutputTap::take() {
  if (!(middle_.load(std::memory_order_relaxed) & freshBit)) return nullptr;
  front = middle_.exchange(front, std::memory_order_acq_rel) & ~freshBit;
  return &buffers[static_cast<size_t>(front)];
}

void OutputTap::restart(int64_t underrunsNow) {
  sent_.store(0, std::memory_order_relaxed);
  underrunBase_.store(underrunsNow, std::memory_order_relaxed);
  generation_.fetch_add(1, std::memory_order_relaxed);
}

OutputSnapshot* OutputTap::collect(const Sample* samples, int count) {
  OutputSnapshot& slot = buffers[static_cast<size_t>(back)];
  const Clock::time_point now = Clock::now();
  const uint32_t generation = generation_.load(std::memory_order_relaxed);
  // A fill from before a restart, or left when the monitor was hidden, is not this output's.
  if (slot.count > 0 && (fillGeneration != generation || now - fillStart > 5 * longestFill))
    slot.count = 0;
  if (slot.count == 0) {
    if (now - lastPublish < interval) return nullptr;
    fillStart = now;
    fillGeneration = generation;
  }
  const int taken = std::clamp(count, 0, snapshotSamples - slot.count);
  if (taken > 0 && samples) {
    std::memcpy(slot.samples.data() + slot.count, samples, sizeof(Sample) * size_t(taken));
    slot.count += taken;
  }
  if (slot.count == 0) return nullptr;
  if (slot.count < snapshotSamples && now - fillStart < longestFill) return nullptr;
  slot.generation = fillGeneration;
  return &slot;
}

int64_t OutputTap::underrunsSinceRestart(int64_t deviceCount) {
  int64_t base = underrunBase_.load(std::memory_order_relaxed);
  if (base < 0 && underrunBase_.compare_exchange_strong(base, deviceCount)) base = deviceCount;
  return deviceCount - base;
}

void OutputTap::publish() {
  lastPublish = Clock::now();
  back = middle_.exchange(back | freshBit, std::memory_order_acq_rel) & ~freshBit;
  buffers[static_cast<size_t>(back)].count = 0;
}
