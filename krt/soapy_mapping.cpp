// SPDX-License-Identifier: MIT
// How the KRT40's settings map onto a SoapySDR transmitter.
#include "krt/soapy_mapping.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <limits>

namespace krtsim {

LevelSplit splitLevel(double levelDbm, double calibrationDb, double gainMinDb, double gainMaxDb) {
  LevelSplit split;
  const double wanted = levelDbm - calibrationDb;
  if (!(gainMaxDb >= gainMinDb)) gainMaxDb = gainMinDb;  // a range reported upside down
  if (wanted > gainMaxDb) {
    split.gainDb = gainMaxDb;
    split.clamped = true;
  } else if (wanted < gainMinDb) {
    split.gainDb = gainMinDb;
    split.scale = static_cast<float>(std::pow(10.0, (wanted - gainMinDb) / 20.0));
  } else {
    split.gainDb = wanted;
  }
  return split;
}

namespace {

// The rate of one range nearest to asked, and its distance.
double nearestInRange(double asked, const RateRange& r) {
  const double clamped = std::clamp(asked, r.minimum, std::max(r.minimum, r.maximum));
  if (!(r.step > 0)) return clamped;
  const double steps = std::round((clamped - r.minimum) / r.step);
  return std::min(r.minimum + steps * r.step, std::max(r.minimum, r.maximum));
}

}  // namespace

double nearestRate(double asked, const std::vector<RateRange>& ranges) {
  double best = asked;
  double bestDistance = std::numeric_limits<double>::infinity();
  for (const RateRange& r : ranges) {
    const double rate = nearestInRange(asked, r);
    const double distance = std::fabs(rate - asked);
    if (rate > 0 && distance < bestDistance) {
      best = rate;
      bestDistance = distance;
    }
  }
  return best;
}

int serialForIdentity(const std::string& identity) {
  uint32_t hash = 2166136261u;  // FNV-1a
  for (unsigned char c : identity) {
    hash ^= c;
    hash *= 16777619u;
  }
  return 90000000 + static_cast<int>(hash % 10000000u);
}

bool isReceiveOnlyDriver(const std::string& driver) {
  static const char* const receiveOnly[] = {"rtlsdr", "airspy",  "airspyhf", "sdrplay", "audio",
                                            "netsdr", "rfspace", "osmosdr",  "mirisdr"};
  return std::find(std::begin(receiveOnly), std::end(receiveOnly), driver) != std::end(receiveOnly);
}

int leadingVersionNumber(const std::string& text) {
  const auto digit =
      std::find_if(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
  int value = 0;
  for (auto it = digit; it != text.end() && std::isdigit(static_cast<unsigned char>(*it)); ++it) {
    if (value > 100000000) break;
    value = value * 10 + (*it - '0');
  }
  return value;
}

}  // namespace krtsim
