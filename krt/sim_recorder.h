// SPDX-License-Identifier: MIT
// SigMF recording (cf32_le data and JSON meta) of what a simulated device played.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "krt/sample_block.h"
#include "krt/sim_settings.h"

namespace krtsim {

// Writes <prefix>.sigmf-data and <prefix>.sigmf-meta. Samples are handed over as references to
// pooled blocks and written by a writer thread of its own, so a caller never waits for the disk
// at speed > 0: if more than kMaxPendingBytes wait for the disk, recording stops for good with
// a "recording stopped" annotation and playback goes on. With backpressure (speed 0, where
// there is no real time to keep) waitForRoom() holds the producer back instead.
//
// Positions (capture and annotation sample_start) count recorded samples. A capture segment
// starts where samples are played with settings that differ from the last segment's in any
// field (frequency, level, rate, and the others it reports), so each segment's fields hold
// for all its samples; changes without samples in between make one segment.
class SimRecorder {
public:
  static constexpr size_t kMaxPendingBytes = size_t(256) << 20;
  // Capture segments and annotations kept at most: settings that change every few samples (a
  // step sweep of 1 us dwells, with its underruns) would otherwise grow the meta without end.
  // Past it recording stops for good, with a "recording stopped" annotation.
  static constexpr size_t kMaxMetaEntries = 20000;

  SimRecorder(const std::string& prefix, int64_t maxSamples, bool backpressure);
  SimRecorder(const SimRecorder&) = delete;
  SimRecorder& operator=(const SimRecorder&) = delete;

  // False once the limit is reached or recording stopped; then nothing more is recorded.
  bool accepting() const { return accepting_.load(std::memory_order_relaxed); }

  // Blocks while the writer is behind (backpressure mode only) and count samples won't fit.
  void waitForRoom(int64_t count);

  // The settings of the samples appended from now on.
  void setSettings(const DeviceSettings& settings);
  // count samples from block at offset (in samples) were played; block may be null only
  // when !accepting().
  void append(std::shared_ptr<SampleBlock> block, int64_t offset, int64_t count);
  // A point annotation at the current position: "trigger", "abort" (dropped >= 0: samples
  // dropped from the queue), "underrun".
  void annotate(const char* label, int64_t dropped = -1);
  // Asks the writer for a rewrite of the meta file (abort, flush).
  void requestMeta();
  // Waits until everything appended so far is written and the meta file is rewritten;
  // false on time-out.
  bool sync(double timeoutSeconds);

private:
  struct Job {
    std::shared_ptr<SampleBlock> block;
    int64_t offset;
    int64_t count;
  };
  struct Capture {
    int64_t start;
    DeviceSettings settings;
  };
  struct Annotation {
    int64_t start;
    std::string label;
    std::string comment;
    int64_t dropped;
  };

  void writerMain();
  bool writeAll(const char* data, size_t bytes);
  void stopLocked(const std::string& comment);  // mutex_ held
  bool metaFullLocked();                        // mutex_ held; stops recording when full
  void failWriteLocked(int64_t written, int error);
  void writeMetaLocked(std::unique_lock<std::mutex>& lock);

  const std::string dataPath_;
  const std::string metaPath_;
  const int64_t maxSamples_;
  const bool backpressure_;
  int fd_ = -1;

  std::mutex mutex_;
  std::condition_variable workCv_, roomCv_, syncCv_;
  std::atomic<bool> accepting_{true};
  std::deque<Job> jobs_;
  size_t pendingBytes_ = 0;
  int64_t recorded_ = 0;  // samples accepted into the recording
  DeviceSettings current_;
  bool haveSegment_ = false;
  std::vector<Capture> captures_;
  std::vector<Annotation> annotations_;
  bool metaRequested_ = true;
  uint64_t syncRequested_ = 0;
  uint64_t syncDone_ = 0;
  bool dataSinceMeta_ = false;
  double lastMetaTime_ = 0;

  // The writer's own copy of the meta entries (captures and annotations only grow).
  std::vector<Capture> metaCaptures_;
  std::vector<Annotation> metaAnnotations_;
};

}  // namespace krtsim
