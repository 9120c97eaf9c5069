// SPDX-License-Identifier: MIT
// SigMF recording (cf32_le data and JSON meta) of what a simulated device played.
#include "krt/sim_recorder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <thread>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "krt/sim_clock.h"

namespace krtsim {

namespace {

using Json = nlohmann::ordered_json;
constexpr size_t kBytesPerSample = 2 * sizeof(float);
constexpr double kMetaPeriodSeconds = 1.0;

Json captureJson(int64_t start, const DeviceSettings& s) {
  Json c;
  c["core:sample_start"] = start;
  c["core:frequency"] = s.frequencyHz;
  c["krt40:sample_rate"] = s.sampleRate;
  c["krt40:level_dbm"] = s.levelDbm;
  c["krt40:digital_tuning"] = s.digitalTuning != 0;
  c["krt40:rf_output"] = s.rfOutput != 0;
  c["krt40:iq_offset"] = Json::array({s.iOffset, s.qOffset});
  c["krt40:timebase"] = s.timebase;
  c["krt40:timebase_offset_ppm"] = s.timebaseOffsetPpm;
  return c;
}

}  // namespace

SimRecorder::SimRecorder(const std::string& prefix, int64_t maxSamples, bool backpressure)
    : dataPath_(prefix + ".sigmf-data"),
      metaPath_(prefix + ".sigmf-meta"),
      maxSamples_(maxSamples),
      backpressure_(backpressure) {
  fd_ = ::open(dataPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd_ < 0) {
    std::cerr << "krt_api: cannot record to " << dataPath_ << ": " << std::strerror(errno)
              << std::endl;
    accepting_ = false;
  }
  if (maxSamples_ <= 0) accepting_ = false;
  // Never joined: the recorder lives as long as the process (see SimLibrary).
  std::thread(&SimRecorder::writerMain, this).detach();
}

void SimRecorder::waitForRoom(int64_t count) {
  if (!backpressure_) return;
  const size_t bytes = static_cast<size_t>(count) * kBytesPerSample;
  std::unique_lock<std::mutex> lock(mutex_);
  roomCv_.wait(lock, [&] {
    return !accepting_ || pendingBytes_ == 0 || pendingBytes_ + bytes <= kMaxPendingBytes;
  });
}

void SimRecorder::setSettings(const DeviceSettings& settings) {
  std::lock_guard<std::mutex> lock(mutex_);
  current_ = settings;
}

void SimRecorder::append(std::shared_ptr<SampleBlock> block, int64_t offset, int64_t count) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!accepting_ || count <= 0 || !block) return;
  const int64_t n = std::min(count, maxSamples_ - recorded_);
  const size_t bytes = static_cast<size_t>(n) * kBytesPerSample;
  if (!backpressure_ && pendingBytes_ + bytes > kMaxPendingBytes) {
    stopLocked("the disk could not keep up");
    return;
  }
  if (captures_.empty() || captures_.back().settings != current_) {
    if (metaFullLocked()) return;
    captures_.push_back({recorded_, current_});
  }
  jobs_.push_back({std::move(block), offset, n});
  pendingBytes_ += bytes;
  recorded_ += n;
  if (recorded_ >= maxSamples_) {
    accepting_ = false;  // the limit: playback goes on unrecorded
    metaRequested_ = true;
  }
  workCv_.notify_one();
}

void SimRecorder::annotate(const char* label, int64_t dropped) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!accepting_ || metaFullLocked()) return;
  annotations_.push_back({recorded_, label, std::string(), dropped});
}

bool SimRecorder::metaFullLocked() {
  if (captures_.size() + annotations_.size() < kMaxMetaEntries) return false;
  stopLocked("too many capture segments and annotations");
  return true;
}

void SimRecorder::requestMeta() {
  std::lock_guard<std::mutex> lock(mutex_);
  metaRequested_ = true;
  workCv_.notify_one();
}

bool SimRecorder::sync(double timeoutSeconds) {
  std::unique_lock<std::mutex> lock(mutex_);
  const uint64_t generation = ++syncRequested_;
  workCv_.notify_one();
  return syncCv_.wait_for(lock, std::chrono::duration<double>(timeoutSeconds),
                          [&] { return syncDone_ >= generation; });
}

void SimRecorder::stopLocked(const std::string& comment) {
  accepting_ = false;
  annotations_.push_back({recorded_, "recording stopped", comment, -1});
  metaRequested_ = true;
  workCv_.notify_one();
  roomCv_.notify_all();
  std::cerr << "krt_api: recording stopped at sample " << recorded_ << ": " << comment << std::endl;
}

bool SimRecorder::writeAll(const char* data, size_t bytes) {
  while (bytes > 0) {
    const ssize_t n = ::write(fd_, data, bytes);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    data += n;
    bytes -= static_cast<size_t>(n);
  }
  return true;
}

void SimRecorder::writerMain() {
  std::unique_lock<std::mutex> lock(mutex_);
  int64_t written = 0;  // samples in the data file
  for (;;) {
    const bool idle = jobs_.empty();
    const bool periodDue = nowSeconds() - lastMetaTime_ >= kMetaPeriodSeconds;
    if ((idle && (metaRequested_ || syncDone_ != syncRequested_)) ||
        (periodDue && (metaRequested_ || dataSinceMeta_))) {
      const uint64_t generation = syncRequested_;
      writeMetaLocked(lock);
      if (idle) {  // every job appended before the request is on disk
        syncDone_ = generation;
        syncCv_.notify_all();
      }
      continue;
    }
    if (!idle) {
      Job job = std::move(jobs_.front());
      jobs_.pop_front();
      const size_t bytes = static_cast<size_t>(job.count) * kBytesPerSample;
      lock.unlock();
      const bool ok =
          writeAll(reinterpret_cast<const char*>(job.block->data() + 2 * job.offset), bytes);
      const int error = errno;
      job.block.reset();  // back to the pool
      lock.lock();
      pendingBytes_ -= bytes;
      if (ok) {
        written += job.count;
        dataSinceMeta_ = true;
      } else {
        failWriteLocked(written, error);
      }
      roomCv_.notify_all();
      continue;
    }
    if (dataSinceMeta_) {
      const double wait = std::max(0.0, kMetaPeriodSeconds - (nowSeconds() - lastMetaTime_));
      workCv_.wait_for(lock, std::chrono::duration<double>(wait));
    } else {
      workCv_.wait(lock);
    }
  }
}

void SimRecorder::failWriteLocked(int64_t written, int error) {
  // Keep data and meta consistent: both end at what reached the file.
  jobs_.clear();
  pendingBytes_ = 0;
  if (::ftruncate(fd_, written * static_cast<int64_t>(kBytesPerSample)) != 0) {
    // the meta still tells where the valid data ends
  }
  recorded_ = written;
  captures_.erase(std::remove_if(captures_.begin(), captures_.end(),
                                 [written](const Capture& c) { return c.start >= written; }),
                  captures_.end());
  annotations_.erase(std::remove_if(annotations_.begin(), annotations_.end(),
                                    [written](const Annotation& a) { return a.start > written; }),
                     annotations_.end());
  metaCaptures_.clear();  // copied afresh at the next meta write
  metaAnnotations_.clear();
  stopLocked(std::string("write error: ") + std::strerror(error));
}

void SimRecorder::writeMetaLocked(std::unique_lock<std::mutex>& lock) {
  metaCaptures_.insert(metaCaptures_.end(),
                       captures_.begin() + static_cast<long>(metaCaptures_.size()),
                       captures_.end());
  metaAnnotations_.insert(metaAnnotations_.end(),
                          annotations_.begin() + static_cast<long>(metaAnnotations_.size()),
                          annotations_.end());
  metaRequested_ = false;
  dataSinceMeta_ = false;
  lastMetaTime_ = nowSeconds();
  lock.unlock();

  Json meta;
  Json& global = meta["global"];
  global["core:datatype"] = "cf32_le";
  global["core:version"] = "1.0.0";
  if (!metaCaptures_.empty())
    global["core:sample_rate"] = metaCaptures_.front().settings.sampleRate;
  global["core:hw"] = "KRT40 (simulated)";
  global["core:recorder"] = "krt_api 1.0.0 (simulated)";
  global["core:description"] = "Output of the simulated KRT40 vector signal generator";
  global["core:extensions"] =
      Json::array({{{"name", "krt40"}, {"version", "1.0.0"}, {"optional", true}}});
  Json captures = Json::array();
  for (const Capture& c : metaCaptures_) captures.push_back(captureJson(c.start, c.settings));
  meta["captures"] = std::move(captures);
  Json annotations = Json::array();
  for (const Annotation& a : metaAnnotations_) {
    Json j;
    j["core:sample_start"] = a.start;
    j["core:sample_count"] = 0;  // point events
    j["core:label"] = a.label;
    if (!a.comment.empty()) j["core:comment"] = a.comment;
    if (a.dropped >= 0) j["krt40:dropped_samples"] = a.dropped;
    annotations.push_back(std::move(j));
  }
  meta["annotations"] = std::move(annotations);

  const std::string tmp = metaPath_ + ".tmp";
  {
    std::ofstream out(tmp, std::ios::trunc);
    out << meta.dump(2) << '\n';
  }
  if (std::rename(tmp.c_str(), metaPath_.c_str()) != 0) std::remove(tmp.c_str());
  lock.lock();
}

}  // namespace krtsim
