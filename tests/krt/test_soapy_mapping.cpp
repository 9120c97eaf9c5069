// SPDX-License-Identifier: MIT
// The KRT40's settings on a SoapySDR transmitter: level split into gain and scale, rates.
#include "krt/soapy_mapping.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using krtsim::RateRange;

TEST(SoapyMapping, LevelSplitsIntoGainAndDigitalScale) {
  const struct {
    double level, calibration, gainMin, gainMax;
    double gain, scaleDb;
    bool clamped;
  } rows[] = {
      {-12, -40, 0, 60, 28, 0, false},       // within the gain range
      {-70, -40, 0, 60, 0, -30, false},      // below it: the rest is digital
      {-120, 0, -10, 40, -10, -110, false},  // the bottom of the level range stays reachable
      {10, -40, 0, 47, 47, 0, true},         // above it: the highest gain, said
      {0, 0, 5, 3, 5, -5, false},            // a range reported upside down is one point
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.level);
    const krtsim::LevelSplit split =
        krtsim::splitLevel(row.level, row.calibration, row.gainMin, row.gainMax);
    EXPECT_DOUBLE_EQ(split.gainDb, row.gain);
    EXPECT_NEAR(20 * std::log10(split.scale), row.scaleDb, 1e-5);
    EXPECT_EQ(split.clamped, row.clamped);
  }
}

TEST(SoapyMapping, NearestSupportedRate) {
  const std::vector<RateRange> continuous{{1e5, 40e6, 0}};
  const std::vector<RateRange> discrete{{2e6, 2e6, 0}, {4e6, 4e6, 0}, {8e6, 8e6, 0}};
  const std::vector<RateRange> stepped{{1e6, 10e6, 0.5e6}};
  const struct {
    const std::vector<RateRange>* ranges;
    double asked, played;
  } rows[] = {{&continuous, 5e7, 4e7}, {&continuous, 1234567, 1234567}, {&continuous, 5e4, 1e5},
              {&discrete, 5e6, 4e6},   {&discrete, 7e6, 8e6},           {&stepped, 2.3e6, 2.5e6},
              {&stepped, 11e6, 10e6},  {&stepped, 2.5e6, 2.5e6}};
  for (const auto& row : rows)
    EXPECT_DOUBLE_EQ(krtsim::nearestRate(row.asked, *row.ranges), row.played);
  EXPECT_DOUBLE_EQ(krtsim::nearestRate(3e6, {}), 3e6);  // a module that gives no ranges
}

TEST(SoapyMapping, FirmwareNumberFromVersionText) {
  EXPECT_EQ(krtsim::leadingVersionNumber("v3.2"), 3);
  EXPECT_EQ(krtsim::leadingVersionNumber("2024.01"), 2024);
  EXPECT_EQ(krtsim::leadingVersionNumber("unknown"), 0);
}

}  // namespace
