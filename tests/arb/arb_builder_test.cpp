// SPDX-License-Identifier: MIT
// The arb play period: range, scale, level by the mean power without the padding, zeros.
#include "arb/arb_builder.h"
#include "arb/arb_config.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Samples = std::vector<Sample>;

TEST(ArbBuilder, RangeScaleLevelAndPadding) {
  const Samples file = {{9, 9}, {0.5f, -2.0f}, {1.0f, 0.0f}, {9, 9}};
  struct Row {
    bool autoScale;
    double reference;
    bool average;
    Samples expected;  // the range scaled, then the padding
    double levelDb;
  };
  const double rangePowerDb = 10 * std::log10((0.25 * 0.25 + 1 + 0.25) / 2);
  const Row rows[] = {
      // The peak component, 2, not the peak magnitude, comes to 1.
      {true, 100, true, {{0.25f, -1.0f}, {0.5f, 0.0f}, {}, {}}, rangePowerDb},
      {false, 50, false, {{0.25f, -1.0f}, {0.5f, 0.0f}, {}, {}}, 0.0},
      {false, 100, false, {{0.5f, -2.0f}, {1.0f, 0.0f}, {}, {}}, 0.0},
  };
  for (const Row& row : rows) {
    ArbPlaySettings s;
    s.sampleRateHz = 1e6;
    s.sampleOffset = 1;
    s.samplesToUse = 2;
    s.period = 4;
    s.autoScale = row.autoScale;
    s.referenceScale = row.reference;
    s.outputSignalAverage = row.average;
    const Waveform w = buildArbPlayback(file, s);
    EXPECT_EQ(w.samples, row.expected) << row.autoScale << " " << row.reference;
    EXPECT_NEAR(w.levelOffsetDb, row.levelDb, 1e-6);
    EXPECT_EQ(w.sampleRate, 1e6);
  }
}

// Zeros stay zeros under auto scale, and their mean power is minus infinity: no fault, no NaN.
// A range that plays nothing or lies outside the samples gives no samples.
TEST(ArbBuilder, EdgesOfTheRange) {
  ArbPlaySettings s;
  s.samplesToUse = s.period = 3;
  const Waveform zeros = buildArbPlayback(Samples(3), s);
  EXPECT_EQ(zeros.samples, Samples(3));
  EXPECT_TRUE(std::isinf(zeros.levelOffsetDb) && zeros.levelOffsetDb < 0);
  for (auto [offset, use] : {std::pair{0, 0}, {0, -5}, {2, 2}, {-1, 1}, {4, 0}}) {
    s.sampleOffset = offset;
    s.samplesToUse = use;
    EXPECT_TRUE(buildArbPlayback(Samples(3, {1, 1}), s).samples.empty()) << offset << " " << use;
  }
}

// The saved waveform: rate and period, then each float in its shortest exact form.
TEST(ArbConfig, WritesRateAndPeriodThenTheSamples) {
  QTemporaryDir dir;
  const QString path = dir.filePath("arb.csv");
  ASSERT_TRUE(writeArbConfig(path, 5e7, 3, {{0.1f, -2.0f}, {1e-7f, 0.0f}}));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "SampleRate,5e+07\nPeriod,3\n0.1,-2\n1e-07,0\n");
  EXPECT_FALSE(writeArbConfig(dir.filePath("no/such/dir.csv"), 5e7, 3, {}));
}

}  // namespace
