// SPDX-License-Identifier: MIT
// The settings of one simulated device and their range checks.
#pragma once

#include <cstdint>

namespace krtsim {

// What the device is set to; what a recording's capture segment reports.
struct DeviceSettings {
  double frequencyHz = 1e9;  // 30e6 to 6e9
  double levelDbm = -30;     // -120 to 10, for a full-scale sample (magnitude 1.0)
  double sampleRate = 50e6;  // samples per second, (0, 54e6]
  int digitalTuning = 0;     // 1: low-spur tuning
  int rfOutput = 1;          // output stage enabled (the application never disables it)
  int16_t iOffset = 0;       // device units, -1024 to 1024
  int16_t qOffset = 0;
  int timebase = 0;              // 0 internal, 1 external reference
  double timebaseOffsetPpm = 0;  // -2 to 2

  bool operator==(const DeviceSettings& o) const {
    return frequencyHz == o.frequencyHz && levelDbm == o.levelDbm && sampleRate == o.sampleRate &&
           digitalTuning == o.digitalTuning && rfOutput == o.rfOutput && iOffset == o.iOffset &&
           qOffset == o.qOffset && timebase == o.timebase &&
           timebaseOffsetPpm == o.timebaseOffsetPpm;
  }
  bool operator!=(const DeviceSettings& o) const { return !(*this == o); }
};

// Each setter stores the requested value into s and returns kOk, or stores the clamped value
// (keeps the previous one for a non-finite request) and returns kWarnClamped.
int setFrequency(DeviceSettings& s, double hz);
int setLevel(DeviceSettings& s, double dbm);
int setSampleRate(DeviceSettings& s, double rate);     // <= 0 is clamped to kMinSampleRate
int setDigitalTuning(DeviceSettings& s, int enabled);  // not 0 or 1: stored as 1, warning
int setRfOutput(DeviceSettings& s, int enabled);       // not 0 or 1: stored as 1, warning
int setIqOffset(DeviceSettings& s, int16_t i, int16_t q);
int setTimebase(DeviceSettings& s, int state);  // clamped to 0..1
int setTimebaseOffset(DeviceSettings& s, double ppm);

constexpr double kMinFrequencyHz = 30e6;
constexpr double kMaxFrequencyHz = 6e9;
constexpr double kMinLevelDbm = -120;
constexpr double kMaxLevelDbm = 10;
constexpr double kMinSampleRate = 1.0;  // what a rate <= 0 becomes
constexpr double kMaxSampleRate = 54e6;
constexpr int kMaxIqOffset = 1024;
constexpr double kMaxTimebaseOffsetPpm = 2;

}  // namespace krtsim
