// SPDX-License-Identifier: MIT
// AM and FM builders against their defining numbers, and the signals as an engineer measures
// them: AM depth from the envelope, FM deviation from the instantaneous frequency.
#include "modes/am_fm/am_fm_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace {

constexpr double pi = 3.14159265358979323846;
const int allShapes[] = {ModShapeSine, ModShapeSquare, ModShapeTriangle, ModShapeRamp};
const char* shapeName(int shape) { return shape >= 0 && shape < 4 ? modShapeTexts[shape] : "?"; }

// ---- AM ---------------------------------------------------------------------------------------

TEST(AmBuilder, PeriodLengthAndRateFollowTheHalvingRule) {
  const struct {
    double rate, sampleRate;
    int64_t length;
  } rows[] = {
      {1.0, 16384.0, 16384},
      {3051.7578125, 5e7, 16384},  // S = 5e7 exactly: not above, so not
                                   // halved
      {3052.0, 25001984.0, 8192},
      {1e5, 2.56e7, 256},
      {1e7, 4e7, 4},
  };
  for (const auto& row : rows) {
    for (int shape : allShapes) {
      const Waveform wave = buildAm({row.rate, 30.0, shape});
      EXPECT_EQ(static_cast<int64_t>(wave.samples.size()), row.length) << row.rate;
      EXPECT_DOUBLE_EQ(wave.sampleRate, row.sampleRate) << row.rate;
      EXPECT_EQ(wave.levelOffsetDb, 0.0) << "AM is not level corrected";
    }
  }
}

TEST(AmBuilder, ShapesAtTheirLandmarks) {
  // Rate 1e7 gives N = 4 (h = 2, q = 1), rate 1 gives N = 16384 (h = 8192, q = 4096).
  // I = m x depth / 200 + 0.5, Q = 0.
  const struct {
    double rate, depth;
    int shape, index;
    double m;  // shape value at the index
  } rows[] = {
      {1e7, 100, ModShapeSine, 1, 1.0},
      {1e7, 100, ModShapeSine, 3, -1.0},
      {1e7, 100, ModShapeSquare, 1, 1.0},
      {1e7, 100, ModShapeSquare, 2, -1.0},
      {1e7, 100, ModShapeTriangle, 0, -1.0},
      {1e7, 100, ModShapeTriangle, 3, 0.0},
      {1e7, 100, ModShapeRamp, 1, -0.5},
      {1e7, 100, ModShapeRamp, 3, 0.5},
      {1.0, 30, ModShapeSine, 2048, std::sqrt(0.5)},
      {1.0, 30, ModShapeSine, 12288, -1.0},
      {1.0, 30, ModShapeSquare, 8191, 1.0},
      {1.0, 30, ModShapeSquare, 8192, -1.0},
      {1.0, 30, ModShapeTriangle, 8192, 1.0},
      {1.0, 30, ModShapeTriangle, 16383, 1.0 / 4096 - 1.0},
      {1.0, 30, ModShapeRamp, 4096, -0.5},
      {1.0, 30, ModShapeRamp, 16383, 16383.0 / 8192 - 1.0},
  };
  for (const auto& row : rows) {
    const Waveform wave = buildAm({row.rate, row.depth, row.shape});
    ASSERT_GT(static_cast<int>(wave.samples.size()), row.index);
    EXPECT_NEAR(wave.samples[row.index].real(), row.m * row.depth / 200 + 0.5, 1e-7)
        << shapeName(row.shape) << " at " << row.index;
    EXPECT_EQ(wave.samples[row.index].imag(), 0.0f);
  }
}

TEST(AmBuilder, DepthMeasuredFromTheEnvelope) {
  // Depth = (Emax - Emin) / (Emax + Emin) of the envelope |I + jQ|, as a modulation analyser
  // reads it. Tolerance 0.01 percentage points, 0.05 for the ramp, whose top is 1 - 1/h.
  for (double depth : {0.0, 10.0, 80.0, 100.0}) {
    for (int shape : allShapes) {
      const Waveform wave = buildAm({1000.0, depth, shape});
      double lo = 1e9, hi = -1e9;
      for (Sample s : wave.samples) {
        lo = std::min(lo, static_cast<double>(std::abs(s)));
        hi = std::max(hi, static_cast<double>(std::abs(s)));
      }
      EXPECT_NEAR(100.0 * (hi - lo) / (hi + lo), depth, shape == ModShapeRamp ? 0.05 : 0.01)
          << shapeName(shape) << " at depth " << depth;
      EXPECT_NEAR(hi + lo, 1.0, 1e-4) << "the envelope is centred on one half";
    }
  }
}

TEST(AmFmBuilders, UnknownShapeBuildsNothing) {
  for (int shape : {-1, 4}) {
    const Waveform am = buildAm({1000.0, 50.0, shape});
    EXPECT_TRUE(am.samples.empty()) << shape;
    EXPECT_DOUBLE_EQ(am.sampleRate, 16384000.0) << "the AM generator retunes before it builds";
    const Waveform fm = buildFm({1000.0, 1000.0, shape});
    EXPECT_TRUE(fm.samples.empty()) << shape;
    EXPECT_EQ(fm.sampleRate, 0.0) << "neither retuned nor submitted";
  }
}

// ---- FM ---------------------------------------------------------------------------------------

// Instantaneous frequency in Hz between samples a and b (b after a).
double instantaneousHz(Sample a, Sample b, double sampleRate) {
  const std::complex<double> step = std::complex<double>(b) * std::conj(std::complex<double>(a));
  return std::arg(step) * sampleRate / (2 * pi);
}

TEST(FmBuilder, PeriodLengthRateAndDoubling) {
  const struct {
    double rate, deviation;
    int64_t length;
    double sampleRate;
    size_t buffer;
  } rows[] = {
      {1e7, 1e4, 2, 2e7, 1024},        // W 3e7, N 3 made 2, 9 doublings
      {1000.0, 1e6, 3000, 3e6, 3000},  // m is the smaller of the two
      {1.0, 1000.0, 3000, 3000.0, 3000},
      {1e5, 1e3, 30, 3e6, 1920},  // 30, 60, ..., 1920
      {1e7, 1e7, 4, 4e7, 1024},   // W limited to 5e7: N 5 made 4
      {3e4, 3e4, 1666, 4.998e7, 1666},
      // The arithmetic in its order: 3.3 x 3.0 x 1000.0 / 3.3 is 2999.9999999999995,
      // truncated to 2999 and made even.
      {3.3, 1000.0, 2998, 2998 * 3.3, 2998},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "rate " << row.rate << " deviation " << row.deviation);
    for (int shape : allShapes) {
      const Waveform wave = buildFm({row.rate, row.deviation, shape});
      if (shape == ModShapeTriangle && row.length == 2) {
        EXPECT_TRUE(wave.samples.empty()) << "a 2-sample triangle would divide by zero";
        continue;
      }
      ASSERT_EQ(wave.samples.size(), row.buffer) << shapeName(shape);
      EXPECT_DOUBLE_EQ(wave.sampleRate, row.sampleRate);
      EXPECT_EQ(wave.levelOffsetDb, 0.0);
      // The doubled buffer is copies of the first period, bit for bit.
      int differ = 0;
      for (size_t k = 0; k < wave.samples.size(); ++k)
        if (wave.samples[k] != wave.samples[k % static_cast<size_t>(row.length)]) ++differ;
      EXPECT_EQ(differ, 0) << shapeName(shape);
    }
  }
}

TEST(FmBuilder, PeakDeviationFromTheInstantaneousFrequency) {
  // Periods of 3000 samples: the peak of |f| over a period is the deviation within 0.01 %,
  // the magnitude stays 1 within 1e-4 (float products, never renormalised), and the mean
  // frequency over the period, wrap included, is 0 for the zero-sum shapes.
  const struct {
    double rate, deviation;
  } settings[] = {{1000.0, 5000.0}, {100.0, 1e5}, {10.0, 20.0}};
  for (const auto& setting : settings) {
    for (int shape : allShapes) {
      SCOPED_TRACE(testing::Message() << shapeName(shape) << " rate " << setting.rate
                                      << " deviation " << setting.deviation);
      const Waveform wave = buildFm({setting.rate, setting.deviation, shape});
      const size_t n = 3000;
      ASSERT_EQ(wave.samples.size(), n);
      double peak = 0.0, sum = 0.0, worstMagnitude = 0.0;
      for (size_t i = 0; i < n; ++i) {
        worstMagnitude = std::max(worstMagnitude, std::abs(std::abs(wave.samples[i]) - 1.0f) * 1.0);
        const double f =
            instantaneousHz(wave.samples[(i + n - 1) % n], wave.samples[i], wave.sampleRate);
        if (i > 0) peak = std::max(peak, std::abs(f));
        sum += f;
      }
      // The ramp's -1 is its step at the wrap, so within the period it peaks at 1 - 1/h.
      const double expected =
          shape == ModShapeRamp ? setting.deviation * (1.0 - 1.0 / 1500) : setting.deviation;
      EXPECT_NEAR(peak, expected, 1e-4 * setting.deviation);
      EXPECT_LT(worstMagnitude, 1e-4);
      if (shape != ModShapeRamp) {
        EXPECT_NEAR(sum / n, 0.0, 1e-3 * setting.deviation);
      }
    }
  }
}

TEST(FmBuilder, TriangleOvershootsWhenNIsNotAMultipleOfFour) {
  // Rate 1e5, deviation 1e3: N = 30, h = 15, q = 7, so the top is 15 / 7 - 1 = 8 / 7, not 1.
  const Waveform wave = buildFm({1e5, 1e3, ModShapeTriangle});
  double peak = -1e9;
  for (size_t i = 1; i < 30; ++i)
    peak = std::max(peak, instantaneousHz(wave.samples[i - 1], wave.samples[i], wave.sampleRate));
  EXPECT_NEAR(peak, 1e3 * 8.0 / 7.0, 0.1);
}

TEST(FmBuilder, IsTheFloatProductChainWithoutRenormalisation) {
  // The rounding of the chain is part of the output: float rotors from the double shape,
  // multiplied up in std::complex<float>, bit for bit, drift of the magnitude included.
  for (int shape : allShapes) {
    const double rate = 1000.0, deviation = 7000.0;
    const Waveform wave = buildFm({rate, deviation, shape});
    const int n = 3000, h = n / 2, q = h / 2;
    const double a = deviation / (n * rate);
    std::complex<float> y;
    int differ = 0;
    for (int i = 0; i < n; ++i) {
      const int t = i < h ? i : n - i;
      const double m = shape == ModShapeSine       ? std::sin(i * 2 * pi / n)
                       : shape == ModShapeSquare   ? (i < h ? 1.0 : -1.0)
                       : shape == ModShapeTriangle ? static_cast<double>(t) / q - 1.0
                                                   : static_cast<double>(i) / h - 1.0;
      const float f = static_cast<float>(m * a);
      const std::complex<float> z(static_cast<float>(std::cos(2 * pi * f)),
                                  static_cast<float>(std::sin(2 * pi * f)));
      y = i == 0 ? z : y * z;
      if (wave.samples[i] != y) ++differ;
    }
    EXPECT_EQ(differ, 0) << shapeName(shape);
  }
}

}  // namespace
