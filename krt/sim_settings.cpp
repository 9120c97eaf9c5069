// SPDX-License-Identifier: MIT
// The settings of one simulated device and their range checks.
#include "krt/sim_settings.h"

#include <algorithm>
#include <cmath>

#include "krt/sim_status.h"

namespace krtsim {

namespace {

int clampInto(double& field, double requested, double lo, double hi) {
  if (!std::isfinite(requested)) return kWarnClamped;  // kept at the previous value
  field = std::clamp(requested, lo, hi);
  return field == requested ? kOk : kWarnClamped;
}

int flag(int& field, int requested) {
  field = requested != 0 ? 1 : 0;
  return requested == 0 || requested == 1 ? kOk : kWarnClamped;
}

int16_t clampOffset(int16_t v, int& status) {
  const int c = std::clamp<int>(v, -kMaxIqOffset, kMaxIqOffset);
  if (c != v) status = kWarnClamped;
  return static_cast<int16_t>(c);
}

}  // namespace

int setFrequency(DeviceSettings& s, double hz) {
  return clampInto(s.frequencyHz, hz, kMinFrequencyHz, kMaxFrequencyHz);
}

int setLevel(DeviceSettings& s, double dbm) {
  return clampInto(s.levelDbm, dbm, kMinLevelDbm, kMaxLevelDbm);
}

int setSampleRate(DeviceSettings& s, double rate) {
  if (!std::isfinite(rate)) return kWarnClamped;
  if (rate <= 0) {
    s.sampleRate = kMinSampleRate;
    return kWarnClamped;
  }
  s.sampleRate = std::min(rate, kMaxSampleRate);
  return rate > kMaxSampleRate ? kWarnClamped : kOk;
}

int setDigitalTuning(DeviceSettings& s, int enabled) { return flag(s.digitalTuning, enabled); }

int setRfOutput(DeviceSettings& s, int enabled) { return flag(s.rfOutput, enabled); }

int setIqOffset(DeviceSettings& s, int16_t i, int16_t q) {
  int status = kOk;
  s.iOffset = clampOffset(i, status);
  s.qOffset = clampOffset(q, status);
  return status;
}

int setTimebase(DeviceSettings& s, int state) {
  s.timebase = std::clamp(state, 0, 1);
  return s.timebase == state ? kOk : kWarnClamped;
}

int setTimebaseOffset(DeviceSettings& s, double ppm) {
  return clampInto(s.timebaseOffsetPpm, ppm, -kMaxTimebaseOffsetPpm, kMaxTimebaseOffsetPpm);
}

}  // namespace krtsim
