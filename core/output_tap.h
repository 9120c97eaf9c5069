// SPDX-License-Identifier: MIT
// Snapshots of what is handed to the device, passed from the streaming thread to the monitor.
#pragma once

#include "dsp/sample.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <vector>

// One block of consecutive output samples and what was set when it went out.
struct OutputSnapshot {
  std::vector<Sample> samples;  // `count` valid
  int count = 0;
  double centerFrequencyHz = 0.0;
  double sampleRateHz = 0.0;
  int64_t underruns = 0;    // since the last restart
  uint32_t generation = 0;  // restarts since the tap was made
};

// A triple buffer: the streaming thread (the one producer) fills its own slot and swaps it into
// the middle; the monitor (the one consumer) swaps the middle out when it holds a fresh one.
// Neither ever waits for the other. While the monitor is off, an offer costs one atomic load.
class OutputTap {
public:
  static constexpr int snapshotSamples = 65536;
  // At most about twenty snapshots a second: a fill starts this long after the last one.
  static constexpr std::chrono::milliseconds interval{50};
  // At low rates a snapshot goes out with what it has after this long.
  static constexpr std::chrono::milliseconds longestFill{200};

  // Monitor side. The buffers are made at the first enabling, so that a device whose output
  // is never looked at carries none; the producer sees them through the acquire below.
  void setEnabled(bool on);
  bool enabled() const { return enabled_.load(std::memory_order_acquire); }
  // The fresh snapshot, or null when none came since the last take. Valid until the next take.
  const OutputSnapshot* take();
  // A new run of the output begins: counts start again from here. `underrunsNow` is the
  // device's count at this moment, or -1 for the count at the next snapshot.
  void restart(int64_t underrunsNow);
  int64_t samplesSent() const { return sent_.load(std::memory_order_relaxed); }
  uint32_t generation() const { return generation_.load(std::memory_order_relaxed); }

  // Streaming thread: counts every sample sent.
  void countSent(int count) { sent_.fetch_add(count, std::memory_order_relaxed); }
  // Copies what the snapshot being filled still takes; returns it once complete, for the
  // caller to add the settings and publish(). Call only while enabled().
  OutputSnapshot* collect(const Sample* samples, int count);
  void publish();
  // The device counted `deviceCount` underruns since it was opened: those since the restart.
  int64_t underrunsSinceRestart(int64_t deviceCount);

private:
  using Clock = std::chrono::steady_clock;

  std::array<OutputSnapshot, 3> buffers;
  std::atomic<int> middle_{1};  // slot index, | freshBit when not yet taken
  int back = 0;                 // producer's
  int front = 2;                // consumer's
  std::atomic<bool> enabled_{false};
  std::atomic<int64_t> sent_{0};
  std::atomic<int64_t> underrunBase_{-1};
  std::atomic<uint32_t> generation_{0};
  // Producer's fill state.
  uint32_t fillGeneration = 0;
  Clock::time_point fillStart{};
  Clock::time_point lastPublish{};
};
