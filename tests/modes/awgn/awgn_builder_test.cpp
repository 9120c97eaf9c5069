// SPDX-License-Identifier: MIT
// The AWGN record against a direct computation: rate, length, filter, peak and level.
#include "modes/awgn/awgn_builder.h"

#include "dsp/vec_design.h"
#include "dsp/vec_random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

namespace {

// The seeded record, filtered by a direct circular convolution in double (output i centred on
// input i) with 65 Blackman taps at 0.4, and divided by its greatest magnitude.
std::vector<std::complex<double>> reference(int length, int seed) {
  std::vector<float> raw(2 * length);
  vecRandGauss32f(raw.data(), 2 * length, 0.0f, static_cast<float>(std::sqrt(0.707)), seed);
  double taps[65];
  vecDesignLowpass(0.4, taps, 65, 1, true);
  std::vector<std::complex<double>> out(length);
  double peak = 0.0;
  for (int i = 0; i < length; ++i) {
    for (int k = 0; k < 65; ++k) {
      const int j = ((i + 32 - k) % length + length) % length;
      out[i] += taps[k] * std::complex<double>(raw[2 * j], raw[2 * j + 1]);
    }
    peak = std::max(peak, std::abs(out[i]));
  }
  for (auto& x : out) x /= peak;
  return out;
}

TEST(AwgnBuilder, RecordRateAndLevelAsComputedDirectly) {
  struct Case {
    double bandwidthHz, lengthS;
    int seed;
    double rateHz;
    int64_t length;
  };
  const Case cases[] = {
      {5e4, 1e-4, 23, 62500.0, 65},  // 6 samples raised to the filter's length
      {1e6, 0.01, 7, 1.25e6, 12500},
      {3e6, 1e-4, 0, 3.75e6, 375},
      {1e6, 8202.5 / 1.25e6, 9, 1.25e6, 8202},  // the far end of the record in two blocks
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.length);
    const LongWaveform wave = buildAwgn({c.bandwidthHz, c.lengthS, c.seed});
    EXPECT_EQ(wave.sampleRate, c.rateHz);
    ASSERT_EQ(wave.samples.size(), c.length);
    const auto expected = reference(static_cast<int>(c.length), c.seed);
    double worst = 0.0, peak = 0.0, power = 0.0;
    for (int64_t i = 0; i < c.length; ++i) {
      const std::complex<double> x(wave.samples[i]);
      worst = std::max(worst, std::abs(x - expected[i]));
      peak = std::max(peak, std::abs(x));
      power += std::norm(x);
    }
    EXPECT_LT(worst, 2e-6);
    EXPECT_NEAR(peak, 1.0, 1e-6) << "the peak sits at full scale";
    EXPECT_NEAR(wave.levelOffsetDb, 10.0 * std::log10(power / c.length), 1e-6);
  }
}

TEST(AwgnBuilder, LongestRecordAndRepeatability) {
  const LongWaveform longest = buildAwgn({4e7, 0.2, 23});
  EXPECT_EQ(longest.sampleRate, 5e7);
  EXPECT_EQ(longest.samples.size(), 10000000);

  const LongWaveform a = buildAwgn({2e6, 0.001, 5}), b = buildAwgn({2e6, 0.001, 5});
  const LongWaveform other = buildAwgn({2e6, 0.001, 6});
  ASSERT_EQ(a.samples.size(), 2500);
  EXPECT_EQ(std::vector<Sample>(a.samples.data(), a.samples.data() + 2500),
            std::vector<Sample>(b.samples.data(), b.samples.data() + 2500));
  EXPECT_NE(a.samples[0], other.samples[0]);
  // Only a preset could ask for these: nothing is built.
  EXPECT_TRUE(buildAwgn({0.0, 0.01, 1}).samples.empty());
  EXPECT_TRUE(buildAwgn({NAN, 0.01, 1}).samples.empty());
}

}  // namespace
