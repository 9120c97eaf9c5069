// SPDX-License-Identifier: MIT
// One open SoapySDR transmitter playing the KRT40's calls.
#include "krt/soapy_session.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>

#include <SoapySDR/Constants.h>
#include <SoapySDR/Errors.h>
#include <SoapySDR/Formats.h>

#include "krt/sim_clock.h"
#include "krt/sim_events.h"
#include "krt/sim_status.h"

namespace krtsim {

namespace {

constexpr size_t kChannel = 0;
constexpr long kWriteTimeoutUs = 500000;
// A device that takes nothing for this many timeouts in a row is gone.
constexpr int kTimeoutsBeforeLost = 4;
// A flush waits at most this long for the device's buffers to play out.
constexpr double kMaxFlushSeconds = 1.0;
// One I/Q offset unit is one step of a 16-bit converter.
constexpr double kIqOffsetUnit = 1.0 / 32768.0;
// Samples scaled at a time for a level below the gain range.
constexpr int kScaleBlock = 8192;

std::vector<RateRange> rateRanges(const SoapySDR::RangeList& list) {
  std::vector<RateRange> ranges;
  for (const SoapySDR::Range& r : list) ranges.push_back({r.minimum(), r.maximum(), r.step()});
  return ranges;
}

int firmwareOf(const SoapySDR::Kwargs& info) {
  for (const char* key : {"firmware", "fw_version", "firmware_version", "fw"}) {
    const auto it = info.find(key);
    if (it != info.end()) return leadingVersionNumber(it->second);
  }
  return 0;
}

std::string hz(double value) {
  char text[48];
  std::snprintf(text, sizeof text, "%.0f Hz", value);
  return text;
}

}  // namespace

SoapySession::SoapySession(int handle, int serialNumber, SoapySDR::Device* device, EventLog& events,
                           double calibrationDb, MessageSink sink)
    : handle_(handle),
      serial_(serialNumber),
      device_(device),
      events_(events),
      sink_(sink),
      calibrationDb_(calibrationDb) {
  firmware_ = firmwareOf(device_->getHardwareInfo());
  const SoapySDR::Range gains = device_->getGainRange(SOAPY_SDR_TX, kChannel);
  gainMin_ = gains.minimum();
  gainMax_ = gains.maximum();
  rates_ = rateRanges(device_->getSampleRateRange(SOAPY_SDR_TX, kChannel));
  stream_ = device_->setupStream(SOAPY_SDR_TX, SOAPY_SDR_CF32, {kChannel});
  scaled_.resize(2 * static_cast<size_t>(kScaleBlock));
  std::lock_guard<std::mutex> lock(mutex_);
  applyLevelLocked();
}

SoapySession::~SoapySession() { close(); }

// f() on the open, healthy device under the lock; a module's exception becomes kErrInternal.
template <typename F>
int SoapySession::control(F&& f) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (closed_) return kErrNotOpen;
  if (failed_) return kErrUsb;
  try {
    return f();
  } catch (...) {
    return kErrInternal;
  }
}

void SoapySession::setCalibration(double calibrationDb) {
  control([&] {
    calibrationDb_ = calibrationDb;
    return applyLevelLocked();
  });
}

int SoapySession::setFrequency(double frequencyHz) {
  return control([&] {
    const int r = krtsim::setFrequency(settings_, frequencyHz);
    device_->setFrequency(SOAPY_SDR_TX, kChannel, settings_.frequencyHz);
    return r;
  });
}

int SoapySession::setLevel(double dbm) {
  return control([&] {
    const int r = krtsim::setLevel(settings_, dbm);
    const int applied = applyLevelLocked();
    return r != kOk ? r : applied;
  });
}

int SoapySession::applyLevelLocked() {
  const LevelSplit split = splitLevel(settings_.levelDbm, calibrationDb_, gainMin_, gainMax_);
  device_->setGain(SOAPY_SDR_TX, kChannel, split.gainDb);
  scale_ = settings_.rfOutput ? split.scale : 0.0f;
  if (!split.clamped) return kOk;
  if (!reportedLevel_) {
    reportedLevel_ = true;
    char text[160];
    std::snprintf(text, sizeof text,
                  "Level %.2f dBm above the device's range, %.2f dBm played, clamped",
                  settings_.levelDbm, split.gainDb + calibrationDb_);
    report(text);
  }
  return kWarnClamped;
}

int SoapySession::setSampleRate(double rate) {
  return control([&] {
    const int r = krtsim::setSampleRate(settings_, rate);
    const double asked = settings_.sampleRate;
    const double played = nearestRate(asked, rates_);
    if (played != playedRate_) device_->setSampleRate(SOAPY_SDR_TX, kChannel, played);
    playedRate_ = played;
    if (std::fabs(played - asked) > 1e-9 * asked && reportedRates_.insert(asked).second) {
      report("Sample rate " + hz(asked) + " not supported by the device, " + hz(played) +
             " played, clamped");
    }
    return r;
  });
}

// Low-spur tuning is the KRT40's own; asking for it is answered as by a device without it.
int SoapySession::setDigitalTuning(int enabled) {
  return control([&] {
    const int r = krtsim::setDigitalTuning(settings_, enabled);
    return r == kOk && settings_.digitalTuning ? int(kWarnUnsupported) : r;
  });
}

int SoapySession::setIqOffset(int16_t i, int16_t q) {
  return control([&] {
    const int r = krtsim::setIqOffset(settings_, i, q);
    if (device_->hasDCOffset(SOAPY_SDR_TX, kChannel)) {
      device_->setDCOffset(SOAPY_SDR_TX, kChannel,
                           {settings_.iOffset * kIqOffsetUnit, settings_.qOffset * kIqOffsetUnit});
      return r;
    }
    return r == kOk && (settings_.iOffset || settings_.qOffset) ? int(kWarnUnsupported) : r;
  });
}

int SoapySession::setTimebase(int state) {
  return control([&] {
    const int r = krtsim::setTimebase(settings_, state);
    const std::string source = settings_.timebase ? "external" : "internal";
    const std::vector<std::string> sources = device_->listClockSources();
    if (std::find(sources.begin(), sources.end(), source) != sources.end()) {
      device_->setClockSource(source);
      return r;
    }
    return r == kOk && settings_.timebase ? int(kWarnUnsupported) : r;
  });
}

int SoapySession::setTimebaseOffset(double ppm) {
  return control([&] {
    const int r = krtsim::setTimebaseOffset(settings_, ppm);
    if (device_->hasFrequencyCorrection(SOAPY_SDR_TX, kChannel)) {
      device_->setFrequencyCorrection(SOAPY_SDR_TX, kChannel, settings_.timebaseOffsetPpm);
      return r;
    }
    return r == kOk && settings_.timebaseOffsetPpm != 0 ? int(kWarnUnsupported) : r;
  });
}

// SoapySDR has no common switch for the output stage: off sends zeros at the lowest gain.
int SoapySession::setRfOutputState(int enabled) {
  return control([&] {
    const int r = krtsim::setRfOutput(settings_, enabled);
    applyLevelLocked();
    if (!settings_.rfOutput) device_->setGain(SOAPY_SDR_TX, kChannel, gainMin_);
    return r;
  });
}

int SoapySession::submit(const float* iq, int count) {
  if (closed_) return kErrNotOpen;
  if (failed_) return kErrUsb;
  if (count < 0 || (count > 0 && !iq)) return kErrArgument;
  if (count == 0) return kOk;
  try {
    if (!active_ && !activate()) return kErrUsb;
    const float scale = scale_;
    int r = kOk;
    if (scale == 1.0f) {
      r = writeAll(iq, count);
    } else {
      // SoapySDR writes what it is given, so a scaled level costs one copy, made a block at a
      // time while the block is still in the cache.
      for (int done = 0; done < count && r == kOk; done += kScaleBlock) {
        const int n = std::min(kScaleBlock, count - done);
        const float* from = iq + 2 * static_cast<size_t>(done);
        std::transform(from, from + 2 * n, scaled_.begin(), [scale](float v) { return v * scale; });
        r = writeAll(scaled_.data(), n);
      }
    }
    pollStatus();
    return r;
  } catch (...) {
    markFailed();
    return kErrUsb;
  }
}

bool SoapySession::activate() {
  if (device_->activateStream(stream_) != 0) {
    markFailed();
    return false;
  }
  active_ = true;
  activatedAt_ = nowSeconds();
  writtenSinceActivation_ = 0;
  return true;
}

int SoapySession::writeAll(const float* iq, int count) {
  int done = 0;
  int timeouts = 0;
  while (done < count) {
    const void* buffs[] = {iq + 2 * static_cast<size_t>(done)};
    int flags = 0;
    const int r = device_->writeStream(stream_, buffs, static_cast<size_t>(count - done), flags, 0,
                                       kWriteTimeoutUs);
    if (r > 0) {
      done += r;
      written_ += r;
      writtenSinceActivation_ += r;
      timeouts = 0;
    } else if (r == SOAPY_SDR_UNDERFLOW) {
      countUnderrun();
    } else if ((r == SOAPY_SDR_TIMEOUT || r == 0) && ++timeouts < kTimeoutsBeforeLost) {
      continue;
    } else {
      markFailed();
      return kErrUsb;
    }
  }
  return kOk;
}

// Underruns reported as stream events; a module without them says so once and is not asked
// again.
void SoapySession::pollStatus() {
  for (int events = 0; statusSupported_ && events < 16; ++events) {
    size_t channels = 0;
    int flags = 0;
    long long timeNs = 0;
    const int r = device_->readStreamStatus(stream_, channels, flags, timeNs, 0);
    if (r == SOAPY_SDR_NOT_SUPPORTED) statusSupported_ = false;
    if (r == SOAPY_SDR_UNDERFLOW) countUnderrun();
    if (r != 0 && r != SOAPY_SDR_UNDERFLOW) return;
  }
}

void SoapySession::countUnderrun() {
  const int64_t n = ++underruns_;
  if (events_.enabled()) {
    events_.device(handle_, {{"event", "underrun"}, {"sample", written_}, {"underruns", n}});
  }
}

int SoapySession::trigger() {
  if (closed_) return kErrNotOpen;
  return failed_ ? int(kErrUsb) : int(kWarnUnsupported);  // SoapySDR has no trigger output
}

// Ends the burst and waits until the device says it has played it, or, for a module that
// doesn't report that, until the clock says the samples written are out (at most a second).
int SoapySession::flushAndWait() {
  if (closed_) return kErrNotOpen;
  if (failed_) return kErrUsb;
  if (!active_) return kOk;
  try {
    const void* buffs[] = {scaled_.data()};
    int flags = SOAPY_SDR_END_BURST;
    device_->writeStream(stream_, buffs, 0, flags, 0, kWriteTimeoutUs);
    const double due = activatedAt_ + writtenSinceActivation_ / std::max(playedRate_, 1.0);
    const double deadline = nowSeconds() + std::clamp(due - nowSeconds(), 0.0, kMaxFlushSeconds);
    while (statusSupported_ && nowSeconds() < deadline) {
      size_t channels = 0;
      long long timeNs = 0;
      flags = 0;
      const int r = device_->readStreamStatus(stream_, channels, flags, timeNs, 10000);
      if (r == SOAPY_SDR_NOT_SUPPORTED) statusSupported_ = false;
      if (r == 0 && (flags & SOAPY_SDR_END_BURST)) break;
    }
    if (!statusSupported_) {
      std::this_thread::sleep_for(std::chrono::duration<double>(deadline - nowSeconds()));
    }
    stopStream();
  } catch (...) {
    markFailed();
    return kErrUsb;
  }
  return kOk;
}

int SoapySession::abort() {
  if (closed_) return kErrNotOpen;
  try {
    stopStream();
  } catch (...) {
    markFailed();
  }
  return failed_ ? int(kErrUsb) : int(kOk);
}

void SoapySession::stopStream() {
  if (!active_) return;
  active_ = false;
  device_->deactivateStream(stream_);
}

int SoapySession::usbStatus() {
  if (closed_) return kErrNotOpen;
  return failed_ ? int(kErrUsb) : int(kOk);
}

int SoapySession::readTemperature(float* celsius) {
  if (!celsius) return kErrArgument;
  return control([&] {
    for (const std::string& key : device_->listSensors()) {
      if (key.find("temp") == std::string::npos) continue;
      *celsius = std::stof(device_->readSensor(key));
      return int(kOk);
    }
    return int(kWarnUnsupported);
  });
}

int SoapySession::underrunCount(int64_t* count) {
  if (!count) return kErrArgument;
  if (closed_) return kErrNotOpen;
  *count = underruns_;
  return kOk;
}

void SoapySession::close() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (closed_.exchange(true)) return;
  try {
    stopStream();
    device_->closeStream(stream_);
  } catch (...) {
  }
  try {
    SoapySDR::Device::unmake(device_);
  } catch (...) {
  }
  device_ = nullptr;
}

void SoapySession::markFailed() {
  if (failed_.exchange(true)) return;
  active_ = false;
  if (events_.enabled()) events_.device(handle_, {{"event", "usb_failed"}, {"sample", written_}});
}

void SoapySession::report(const std::string& message) {
  if (sink_) sink_(-1, message.c_str());
}

}  // namespace krtsim
