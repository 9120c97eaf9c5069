// SPDX-License-Identifier: MIT
// The ramp sweep's period bit for bit against its plain definition, and its frequency
// measured from the samples.
#include "modes/ramp_sweep/ramp_sweep_builder.h"
#include "support/ramp_reference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>

namespace {

TEST(RampSweepBuilder, SamplesAreThoseOfTheSerialRecursion) {
  const struct {
    const char* name;
    double span, sweepTime, period;
  } cases[] = {
      {"shortest sweep, period one sample longer", 2e7, 1e-6, 1.03e-6},
      {"period equal to sweep time", 2e7, 1e-3, 1e-3},
      {"full span with a long tail", 4e7, 2e-4, 1e-3},
      {"narrow span, odd lengths", 1.0, 3.33e-5, 4.44e-5},
      {"long sweep, many looks at the run flag", 1.5e7, 0.03, 0.031},
  };
  const std::atomic<bool> running{true};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const LongWaveform wave =
        buildRampSweep({c.span, c.sweepTime, c.period, TriggerContinuous}, &running);
    EXPECT_EQ(wave.sampleRate, 5e7);
    EXPECT_EQ(wave.levelOffsetDb, 0.0);
    const std::vector<Sample> expected = referenceRamp(c.span, c.sweepTime, c.period);
    ASSERT_EQ(wave.samples.size(), int64_t(expected.size()));
    EXPECT_EQ(std::memcmp(wave.samples.data(), expected.data(), expected.size() * sizeof(Sample)),
              0);
  }
  const std::atomic<bool> stopped{false};
  EXPECT_TRUE(buildRampSweep({2e7, 1e-3, 1e-3, TriggerContinuous}, &stopped).samples.empty());
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(buildRampSweep({2e7, nan, 1e-3, TriggerContinuous}).samples.empty());
  EXPECT_EQ(buildRampSweep({2e7, 2e-5, 1e-5, TriggerContinuous}).samples.size(), 500)
      << "a sweep longer than the period is cut to it";
}

TEST(RampSweepBuilder, FrequencyRunsFromMinusToPlusHalfTheSpan) {
  const LongWaveform wave = buildRampSweep({4e7, 1e-4, 1e-4, TriggerContinuous});
  const Sample* s = wave.samples.data();
  // Between samples k and k + 1: -span / 2 + k x span / K, within the phase noise of floats.
  const int64_t K = wave.samples.size();
  for (int64_t k : {int64_t(0), K / 4, K / 2, K - 2}) {
    const std::complex<double> turn = std::complex<double>(s[k + 1]) / std::complex<double>(s[k]);
    EXPECT_NEAR(std::arg(turn) * 5e7 / (2 * M_PI), -2e7 + k * 4e7 / K, 20.0) << k;
  }
}

}  // namespace
