// SPDX-License-Identifier: MIT
// How the KRT40's settings map onto a SoapySDR transmitter: level split, rates, serial numbers.
#pragma once

#include <string>
#include <vector>

namespace krtsim {

// A level split between the device's gain and a digital scale of the samples. The device's
// full-scale output at gain g dB is g + calibration dBm; what the gain range can't give comes
// from the scale, so that -120 dBm stays reachable on every device.
struct LevelSplit {
  double gainDb = 0;
  float scale = 1;       // amplitude factor applied to the samples, <= 1
  bool clamped = false;  // the level lies above what the gain range reaches
};

LevelSplit splitLevel(double levelDbm, double calibrationDb, double gainMinDb, double gainMaxDb);

// One range of rates a device supports; step 0 means every rate between min and max.
struct RateRange {
  double minimum = 0;
  double maximum = 0;
  double step = 0;
};

// The supported rate nearest to asked; asked itself when no range is known.
double nearestRate(double asked, const std::vector<RateRange>& ranges);

// A stable eight-digit serial number in 90000000..99999999 for a SoapySDR device identity
// (driver and serial, or its whole argument string), so that a device keeps its number and its
// calibration from run to run.
int serialForIdentity(const std::string& identity);

// SoapySDR drivers that only receive: their devices are not listed as transmitters, which
// spares opening every receiver to ask for its channels each time the list is read.
bool isReceiveOnlyDriver(const std::string& driver);

// The leading integer of a version text such as "2.1.0" or "v3"; 0 when it has none.
int leadingVersionNumber(const std::string& text);

}  // namespace krtsim
