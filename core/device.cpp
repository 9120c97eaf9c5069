// SPDX-License-Identifier: MIT
// Device session: every call into the device library goes through here.
#include "core/device.h"

#include "core/impairment_stage.h"
#include "krt/krt_api.h"
#include "krt/krt_ext.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {
// The library fills at most this many serial numbers.
constexpr int deviceListCapacity = 8;
}  // namespace

std::vector<int> Device::deviceList() {
  std::vector<int> serials(deviceListCapacity);
  int count = deviceListCapacity;
  krtGetDeviceList(serials.data(), &count);
  if (count < 0) count = 0;
  if (count > deviceListCapacity) count = deviceListCapacity;
  serials.resize(static_cast<size_t>(count));
  return serials;
}

bool Device::open(int serialNumber) {
  if (krtOpenDeviceBySerial(&handle, serialNumber) == 0) return true;
  handle = -1;
  return false;
}

bool Device::close() {
  if (isOpen()) {
    krtCloseDevice(handle);
    handle = -1;
  }
  return true;
}

void Device::retune(const TuneRecord& record) {
  double tunedFrequency = record.frequency;
  double tunedRate = record.sampleRate;
  bool lowSpur = false;
  if (impairments) {
    tunedFrequency += impairments->frequencyOffset();
    tunedRate *= impairments->sampleRateFactor();
    lowSpur = impairments->lowSpurMode();
  }
  // The device expects this order: tuning mode, rate, frequency, level.
  krtSetDigitalTuning(handle, lowSpur ? 1 : 0);
  noteSampleRate(tunedRate, krtSetSampleRate(handle, tunedRate));
  krtSetFrequency(handle, tunedFrequency);
  krtSetLevel(handle, record.level);
  currentTune = record;
}

bool Device::connectionFailed() { return isOpen() && krtGetUSBStatus(handle) != 0; }

int64_t Device::underrunCount() {
  int64_t count = 0;
  if (krtGetUnderrunCount(handle, &count) != 0) return 0;
  return count;
}

void Device::flushAndWait() { krtFlushAndWait(handle); }
void Device::abort() { krtAbort(handle); }
void Device::submitTrigger() { krtSubmitTrigger(handle); }

void Device::submitIQ(const Sample* samples, int count) {
  if (krtSubmitIQ(handle, reinterpret_cast<const float*>(samples), count) != 0) return;
  tap.countSent(count);
  if (tap.enabled()) tapOutput(samples, count);
}

void Device::tapOutput(const Sample* samples, int count) {
  OutputSnapshot* snapshot = tap.collect(samples, count);
  if (!snapshot) return;
  snapshot->centerFrequencyHz = currentTune.frequency;
  snapshot->sampleRateHz = playedSampleRate();
  snapshot->underruns = tap.underrunsSinceRestart(underrunCount());
  tap.publish();
}

void Device::setFrequency(double hz) { krtSetFrequency(handle, hz); }
void Device::setLevel(double dbm) { krtSetLevel(handle, dbm); }
void Device::setSampleRate(double samplesPerSecond) {
  noteSampleRate(samplesPerSecond, krtSetSampleRate(handle, samplesPerSecond));
}

// The library answers 0 for a rate it plays, 1 for one it clamps into its range (a non-finite
// one it ignores), and an error for a handle that isn't open.
void Device::noteSampleRate(double asked, int result) {
  if (result == 0) {
    rateClamped = false;
  } else if (result == 1 && std::isfinite(asked)) {
    rateClamped = true;
    clampedRate = std::clamp(asked, 1.0, maxSampleRate);
  }
}

void Device::setRFOutputState(bool enabled) { krtSetRFOutputState(handle, enabled ? 1 : 0); }
void Device::setTimebase(int state) { krtSetTimebase(handle, state); }
void Device::setTimebaseOffset(double ppm) { krtSetTimebaseOffset(handle, ppm); }

void Device::setIQOffset(std::pair<int16_t, int16_t> offset) {
  krtSetIQOffset(handle, offset.first, offset.second);
}

std::string Device::serialNumberText() {
  int serial = -1;
  krtGetSerialNumber(handle, &serial);
  return std::to_string(serial);
}

std::string Device::firmwareText() {
  int version = -1;
  krtGetFirmwareVersion(handle, &version);
  return std::to_string(version);
}

std::string Device::temperatureText() {
  float celsius = 0.0f;
  krtReadTemperature(handle, &celsius);
  char text[32];
  std::snprintf(text, sizeof text, "%.2f C", static_cast<double>(celsius));
  return text;
}
