// SPDX-License-Identifier: MIT
// One open session of a simulated KRT40: its settings, its sample queue and its player thread.
#include "krt/sim_device.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "krt/sim_clock.h"
#include "krt/sim_config.h"
#include "krt/sim_events.h"
#include "krt/sim_recorder.h"
#include "krt/sim_status.h"
#include "krt/sim_unplug_watch.h"

namespace krtsim {

namespace {
constexpr double kPlayerTickSeconds = 0.001;
constexpr double kWarmUpStartC = 28;
constexpr double kWarmUpEndC = 45;
constexpr double kWarmUpTimeConstantSeconds = 240;
}  // namespace

SimDevice::SimDevice(int handle, int serialNumber, const SimConfig& config, EventLog& events,
                     UnplugWatch& unplug, std::shared_ptr<SimRecorder> recorder)
    : handle_(handle),
      serial_(serialNumber),
      speed_(config.speed),
      queueMs_(config.queueMs),
      openedAt_(nowSeconds()),
      failAt_(config.failAfterMs ? std::optional<double>(openedAt_ + *config.failAfterMs / 1000)
                                 : std::nullopt),
      fixedTemperature_(config.temperatureC),
      events_(events),
      unplug_(unplug),
      recorder_(std::move(recorder)) {
  if (recorder_) recorder_->setSettings(live_);
  unplug_.present(openedAt_, true);
  if (speed_ > 0) player_ = std::thread(&SimDevice::playerMain, this);
}

SimDevice::~SimDevice() { close(); }

template <typename Edit>
int SimDevice::changeSettings(Edit edit) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  if (failed_) return kErrUsb;
  const int status = edit(front_);
  if (queue_.empty()) {
    applyLive(front_);
  } else {
    QueueItem mark(Kind::Settings);
    mark.settings = front_;
    queue_.push_back(std::move(mark));
  }
  return status;
}

int SimDevice::setFrequency(double hz) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setFrequency(s, hz); });
}
int SimDevice::setLevel(double dbm) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setLevel(s, dbm); });
}
int SimDevice::setSampleRate(double rate) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setSampleRate(s, rate); });
}
int SimDevice::setDigitalTuning(int enabled) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setDigitalTuning(s, enabled); });
}
int SimDevice::setIqOffset(int16_t i, int16_t q) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setIqOffset(s, i, q); });
}
int SimDevice::setTimebase(int state) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setTimebase(s, state); });
}
int SimDevice::setTimebaseOffset(double ppm) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setTimebaseOffset(s, ppm); });
}
int SimDevice::setRfOutputState(int enabled) {
  return changeSettings([&](DeviceSettings& s) { return krtsim::setRfOutput(s, enabled); });
}

int SimDevice::submit(const float* iq, int count) {
  if (count < 0 || (count > 0 && !iq)) return kErrArgument;
  // Only a recording needs the samples themselves; copy them before taking the lock.
  std::shared_ptr<SampleBlock> block;
  if (count > 0 && recorder_ && recorder_->accepting()) {
    recorder_->waitForRoom(count);  // speed 0 only: the writer sets the pace
    block = BlockPool::instance().take(count);
    std::memcpy(block->data(), iq, static_cast<size_t>(count) * 2 * sizeof(float));
  }
  std::unique_lock<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  if (failed_) return kErrUsb;
  if (count == 0) return kOk;
  if (speed_ <= 0) {
    play(block, 0, count);
    return kOk;
  }
  if (!flowing_) startFlowing(nowSeconds());
  QueueItem item(Kind::Samples);
  item.count = count;
  item.block = std::move(block);
  queue_.push_back(std::move(item));
  queuedSamples_ += count;
  // Accepted whole; return once what is queued fits the depth (a larger submit than the
  // queue thus waits until its tail fits).
  while (queuedSamples_ > capacity() && !failed_ && !stopping_) {
    waitCv_.wait_for(lock, pollInterval(queuedSamples_ - capacity()));
    catchUp(nowSeconds());
  }
  if (stopping_) return kErrNotOpen;
  return failed_ ? kErrUsb : kOk;
}

int SimDevice::trigger() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  if (failed_) return kErrUsb;
  if (queue_.empty()) {
    if (recorder_) recorder_->annotate("trigger");
  } else {
    queue_.emplace_back(Kind::Trigger);
  }
  return kOk;
}

int SimDevice::flushAndWait() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  if (failed_) return kErrUsb;
  if (queuedSamples_ > 0) {
    flushing_ = true;
    playerCv_.notify_all();
    while (flushing_ && !failed_ && !stopping_) {
      waitCv_.wait_for(lock, pollInterval(queuedSamples_));
      catchUp(nowSeconds());
    }
  } else {
    endFlush();
  }
  if (recorder_) recorder_->requestMeta();
  if (stopping_) return kErrNotOpen;
  return failed_ ? kErrUsb : kOk;
}

int SimDevice::abort() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  dropQueue();
  if (recorder_) recorder_->requestMeta();
  return kOk;
}

int SimDevice::usbStatus() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  return failed_ ? kErrUsb : kOk;
}

int SimDevice::underrunCount(int64_t* count) {
  if (!count) return kErrArgument;
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  catchUp(nowSeconds());
  *count = underruns_;
  return kOk;
}

int SimDevice::readTemperature(float* celsius) {
  if (!celsius) return kErrArgument;
  std::lock_guard<std::mutex> lock(mutex_);
  if (stopping_) return kErrNotOpen;
  const double now = nowSeconds();
  catchUp(now);
  if (failed_) return kErrUsb;
  *celsius = static_cast<float>(
      fixedTemperature_
          ? *fixedTemperature_
          : kWarmUpEndC - (kWarmUpEndC - kWarmUpStartC) *
                              std::exp(-(now - openedAt_) / kWarmUpTimeConstantSeconds));
  return kOk;
}

void SimDevice::close() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_) return;
    catchUp(nowSeconds());
    dropQueue();
    stopping_ = true;
    playerCv_.notify_all();
    waitCv_.notify_all();
  }
  if (player_.joinable()) player_.join();
}

void SimDevice::catchUp(double now) {
  if (failed_ || stopping_) return;
  double t = now;
  bool fail = false;
  if (failAt_ && now >= *failAt_) {
    t = *failAt_;  // play exactly up to the moment of the failure
    fail = true;
  } else if (unplug_.present(now)) {
    fail = true;
  }
  advance(t);
  if (fail) markFailed();
}

int64_t SimDevice::dueAt(double t) const {
  return static_cast<int64_t>(std::floor((t - anchor_) * rate_)) - playedSinceAnchor_;
}

void SimDevice::advance(double t) {
  if (!flowing_) return;  // then the queue is empty
  int64_t due = dueAt(t);
  bool consumed = false;
  while (!queue_.empty()) {
    QueueItem& item = queue_.front();
    if (item.kind == Kind::Samples) {
      if (due <= 0) break;
      const int64_t n = std::min(due, item.count);
      play(item.block, item.offset, n);
      item.offset += n;
      item.count -= n;
      queuedSamples_ -= n;
      playedSinceAnchor_ += n;
      due -= n;
      consumed = true;
      if (item.count > 0) break;
    } else if (item.kind == Kind::Settings) {
      applyLive(item.settings);
      due = dueAt(t);
    } else if (recorder_) {
      recorder_->annotate("trigger");
    }
    queue_.pop_front();
  }
  if (consumed) waitCv_.notify_all();
  if (queuedSamples_ > 0) return;
  if (flushing_) {
    endFlush();
  } else if (due > 0) {
    // The clock has passed the last sample: the queue ran dry while samples were flowing.
    flowing_ = false;
    ++underruns_;
    if (events_.enabled()) {
      events_.device(handle_,
                     {{"event", "underrun"}, {"sample", played_}, {"underruns", underruns_}});
    }
    if (recorder_) recorder_->annotate("underrun");
  }
}

void SimDevice::applyLive(const DeviceSettings& settings) {
  if (flowing_ && settings.sampleRate != live_.sampleRate) {
    // The new rate counts from the moment the play position reached this mark.
    anchor_ += static_cast<double>(playedSinceAnchor_) / rate_;
    playedSinceAnchor_ = 0;
    rate_ = settings.sampleRate * speed_;
  }
  live_ = settings;
  if (recorder_) recorder_->setSettings(live_);
}

void SimDevice::startFlowing(double now) {
  flowing_ = true;
  anchor_ = now;
  playedSinceAnchor_ = 0;
  rate_ = live_.sampleRate * speed_;
  playerCv_.notify_all();
}

void SimDevice::play(const std::shared_ptr<SampleBlock>& block, int64_t offset, int64_t count) {
  played_ += count;
  if (recorder_) recorder_->append(block, offset, count);
}

void SimDevice::endFlush() {
  flushing_ = false;
  flowing_ = false;
  if (events_.enabled()) events_.device(handle_, {{"event", "flushed"}, {"sample", played_}});
  waitCv_.notify_all();
}

void SimDevice::dropQueue() {
  const int64_t dropped = queuedSamples_;
  const bool active = flowing_ || dropped > 0;
  queue_.clear();
  queuedSamples_ = 0;
  flowing_ = false;
  flushing_ = false;
  if (live_ != front_) applyLive(front_);  // settings made stay in effect
  if (active) {
    if (events_.enabled()) {
      events_.device(handle_, {{"event", "abort"}, {"sample", played_}, {"dropped", dropped}});
    }
    if (recorder_) recorder_->annotate("abort", dropped);
  }
  waitCv_.notify_all();
}

void SimDevice::markFailed() {
  failed_ = true;
  flowing_ = false;
  flushing_ = false;
  if (events_.enabled()) events_.device(handle_, {{"event", "usb_failed"}, {"sample", played_}});
  waitCv_.notify_all();
}

int64_t SimDevice::capacity() const {
  return std::max<int64_t>(1, std::llround(front_.sampleRate * queueMs_ / 1000));
}

std::chrono::duration<double> SimDevice::pollInterval(int64_t samples) const {
  const double seconds = rate_ > 0 ? static_cast<double>(samples) / rate_ : 0.005;
  return std::chrono::duration<double>(std::clamp(seconds, 0.0002, 0.005));
}

void SimDevice::playerMain() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!stopping_) {
    if (!flowing_ || failed_) {
      playerCv_.wait(lock);
      continue;
    }
    catchUp(nowSeconds());
    playerCv_.wait_for(lock, std::chrono::duration<double>(kPlayerTickSeconds));
  }
}

}  // namespace krtsim
