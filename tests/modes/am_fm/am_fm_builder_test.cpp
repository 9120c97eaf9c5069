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
      {1000.0, 16384000.0, 16384},
      {3051.7578125, 5e7, 16384},  // S = 5e7 exactly: not above, so not halved
      {3052.0, 25001984.0, 8192},
      {1e5, 2.56e7, 256},
      {5e6, 4e7, 8},
      {1e7, 4e7, 4},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rate);
    const ModPeriod period = amPeriod(row.rate);
    EXPECT_EQ(period.length, row.length);
    EXPECT_DOUBLE_EQ(period.sampleRate, row.sampleRate);
    EXPECT_LE(period.sampleRate, 5e7);
    // One period of samples lasts one modulation period.
    EXPECT_NEAR(static_cast<double>(period.length) / period.sampleRate, 1.0 / row.rate,
                1e-12 / row.rate);
    for (int shape : allShapes) {
      const Waveform wave = buildAm({row.rate, 30.0, shape});
      EXPECT_EQ(static_cast<int64_t>(wave.samples.size()), row.length) << shapeName(shape);
      EXPECT_DOUBLE_EQ(wave.sampleRate, row.sampleRate) << shapeName(shape);
      EXPECT_EQ(wave.levelOffsetDb, 0.0) << "AM is not level corrected";
    }
  }
}

TEST(AmBuilder, FourSamplesAtTheHighestRateForEveryShape) {
  // Rate 1e7: N = 4, h = 2, q = 1; depth 100 % gives d = 0.5, the envelope from 0 to 1.
  const struct {
    int shape;
    float i[4];
  } rows[] = {
      {ModShapeSine, {0.5f, 1.0f, 0.5f, 0.0f}},
      {ModShapeSquare, {1.0f, 1.0f, 0.0f, 0.0f}},
      {ModShapeTriangle, {0.0f, 0.5f, 1.0f, 0.5f}},
      {ModShapeRamp, {0.0f, 0.25f, 0.5f, 0.75f}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(shapeName(row.shape));
    const Waveform wave = buildAm({1e7, 100.0, row.shape});
    ASSERT_EQ(wave.samples.size(), 4u);
    for (int k = 0; k < 4; ++k) {
      EXPECT_NEAR(wave.samples[k].real(), row.i[k], 1e-7) << k;
      EXPECT_EQ(wave.samples[k].imag(), 0.0f) << k;
    }
  }
}

TEST(AmBuilder, LandmarksOfTheLongestPeriod) {
  // Rate 1 Hz: N = 16384, h = 8192, q = 4096; depth 30 % gives d = 0.15.
  const double d = 0.15;
  const struct {
    int shape;
    int index;
    double m;  // shape value at the index
  } rows[] = {
      {ModShapeSine, 0, 0.0},
      {ModShapeSine, 4096, 1.0},
      {ModShapeSine, 8192, 0.0},
      {ModShapeSine, 12288, -1.0},
      {ModShapeSine, 2048, std::sqrt(0.5)},
      {ModShapeSquare, 0, 1.0},
      {ModShapeSquare, 8191, 1.0},
      {ModShapeSquare, 8192, -1.0},
      {ModShapeSquare, 16383, -1.0},
      {ModShapeTriangle, 0, -1.0},
      {ModShapeTriangle, 4096, 0.0},
      {ModShapeTriangle, 8192, 1.0},
      {ModShapeTriangle, 12288, 0.0},
      {ModShapeTriangle, 16383, 1.0 / 4096 - 1.0},
      {ModShapeRamp, 0, -1.0},
      {ModShapeRamp, 4096, -0.5},
      {ModShapeRamp, 8192, 0.0},
      {ModShapeRamp, 16383, 16383.0 / 8192 - 1.0},
  };
  for (const auto& row : rows) {
    const Waveform wave = buildAm({1.0, 30.0, row.shape});
    ASSERT_EQ(wave.samples.size(), 16384u);
    EXPECT_NEAR(wave.samples[row.index].real(), row.m * d + 0.5, 1e-7)
        << shapeName(row.shape) << " at " << row.index;
  }
}

TEST(AmBuilder, DepthZeroIsAConstantHalfSixDecibelsDown) {
  for (double rate : {1.0, 1000.0, 1e7}) {
    for (int shape : allShapes) {
      const Waveform wave = buildAm({rate, 0.0, shape});
      ASSERT_FALSE(wave.samples.empty());
      const bool constant = std::all_of(wave.samples.begin(), wave.samples.end(),
                                        [](Sample s) { return s == Sample(0.5f, 0.0f); });
      EXPECT_TRUE(constant) << shapeName(shape) << " at rate " << rate;
      double power = 0.0;
      for (Sample s : wave.samples) power += std::norm(s);
      power /= static_cast<double>(wave.samples.size());
      EXPECT_NEAR(10.0 * std::log10(power), -6.0206, 1e-3);
    }
  }
}

TEST(AmBuilder, DepthMeasuredFromTheEnvelope) {
  // Depth = (Emax - Emin) / (Emax + Emin) of the envelope |I + jQ|, as a modulation analyser
  // reads it. Tolerance 0.01 percentage points, 0.05 for the ramp, whose top is 1 - 1/h.
  for (double depth : {1.0, 10.0, 50.0, 80.0, 100.0}) {
    for (int shape : allShapes) {
      const Waveform wave = buildAm({1000.0, depth, shape});
      double lo = 1e9, hi = -1e9;
      for (Sample s : wave.samples) {
        lo = std::min(lo, static_cast<double>(std::abs(s)));
        hi = std::max(hi, static_cast<double>(std::abs(s)));
      }
      const double measured = 100.0 * (hi - lo) / (hi + lo);
      EXPECT_NEAR(measured, depth, shape == ModShapeRamp ? 0.05 : 0.01)
          << shapeName(shape) << " at depth " << depth;
    }
  }
}

TEST(AmBuilder, SineEnvelopeIsOneToneAtTheRate) {
  // A single-bin DFT of the envelope: the line at the rate holds depth/2 of the carrier.
  const Waveform wave = buildAm({1000.0, 40.0, ModShapeSine});
  const int n = static_cast<int>(wave.samples.size());
  std::complex<double> dc = 0.0, line = 0.0;
  for (int i = 0; i < n; ++i) {
    dc += wave.samples[i].real();
    line += static_cast<double>(wave.samples[i].real()) * std::polar(1.0, -2 * pi * i / n);
  }
  EXPECT_NEAR(std::abs(dc) / n, 0.5, 1e-6);
  EXPECT_NEAR(2.0 * std::abs(line) / n / (std::abs(dc) / n), 0.40, 1e-5);
}

TEST(AmBuilder, UnknownShapeBuildsNothingButKeepsTheRate) {
  for (int shape : {-1, 4, 7}) {
    const Waveform wave = buildAm({1000.0, 50.0, shape});
    EXPECT_TRUE(wave.samples.empty()) << shape;
    EXPECT_DOUBLE_EQ(wave.sampleRate, 16384000.0) << "the generator retunes before it builds";
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
      {1e7, 1e4, 2, 2e7, 1024},  // W 3e7, N 3 made 2, 9 doublings
      {1000.0, 1000.0, 3000, 3e6, 3000},
      {1000.0, 1e6, 3000, 3e6, 3000},  // m is the smaller of the two
      {1.0, 1.0, 3000, 3000.0, 3000},
      {1.0, 1000.0, 3000, 3000.0, 3000},
      {1000.0, 1.0, 2, 2000.0, 1024},
      {1e5, 1e3, 30, 3e6, 1920},  // 30, 60, ..., 1920
      {1e7, 1e7, 4, 4e7, 1024},   // W limited to 5e7: N 5 made 4
      {1e6, 1e7, 50, 5e7, 1600},
      {3e4, 3e4, 1666, 4.998e7, 1666},
      // The arithmetic in its order: 3.3 x 3.0 x 1000.0 / 3.3 is 2999.9999999999995,
      // truncated to 2999 and made even.
      {3.3, 1000.0, 2998, 2998 * 3.3, 2998},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "rate " << row.rate << " deviation " << row.deviation);
    const ModPeriod period = fmPeriod(row.rate, row.deviation);
    EXPECT_EQ(period.length, row.length);
    EXPECT_DOUBLE_EQ(period.sampleRate, row.sampleRate);
    EXPECT_LE(period.sampleRate, 5e7);
    EXPECT_LE(period.length, 3000) << "the FM period never exceeds 3000 samples";
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
  // frequency over the period is 0 for the zero-sum shapes.
  const struct {
    double rate, deviation;
  } settings[] = {{1000.0, 1000.0}, {1000.0, 5000.0}, {100.0, 1e5}, {1e4, 1e4}, {10.0, 20.0}};
  for (const auto& setting : settings) {
    for (int shape : allShapes) {
      SCOPED_TRACE(testing::Message() << shapeName(shape) << " rate " << setting.rate
                                      << " deviation " << setting.deviation);
      const Waveform wave = buildFm({setting.rate, setting.deviation, shape});
      const size_t n = static_cast<size_t>(fmPeriod(setting.rate, setting.deviation).length);
      ASSERT_EQ(n, 3000u);
      double peak = 0.0, sum = 0.0, worstMagnitude = 0.0;
      for (size_t i = 0; i < n; ++i) {
        worstMagnitude = std::max(worstMagnitude, std::abs(std::abs(wave.samples[i]) - 1.0f) * 1.0);
        if (i == 0) continue;
        const double f = instantaneousHz(wave.samples[i - 1], wave.samples[i], wave.sampleRate);
        peak = std::max(peak, std::abs(f));
        sum += f;
      }
      // The ramp's -1 is its step at the wrap, so within the period it peaks at 1 - 1/h.
      const double expected =
          shape == ModShapeRamp ? setting.deviation * (1.0 - 1.0 / 1500) : setting.deviation;
      EXPECT_NEAR(peak, expected, 1e-4 * setting.deviation);
      EXPECT_LT(worstMagnitude, 1e-4);
      if (shape != ModShapeRamp) {
        // With the wrap step, the n steps of a period add up to a whole turn of 0.
        sum += instantaneousHz(wave.samples[n - 1], wave.samples[0], wave.sampleRate);
        EXPECT_NEAR(sum / n, 0.0, 1e-3 * setting.deviation);
      }
    }
  }
}

TEST(FmBuilder, TheWrapContinuesTheModulation) {
  // Played end to end, the step from the last sample to the first is the shape's first value:
  // 0 for the sine, +D for the square, -D for the triangle. The ramp's values sum to -1 over
  // the period, not 0, so its wrap step reads 0 Hz instead of -D; nothing adjusts it.
  const double rate = 1000.0, deviation = 2000.0;
  const struct {
    int shape;
    double wrapHz;
  } rows[] = {{ModShapeSine, 0.0},
              {ModShapeSquare, deviation},
              {ModShapeTriangle, -deviation},
              {ModShapeRamp, 0.0}};
  for (const auto& row : rows) {
    const Waveform wave = buildFm({rate, deviation, row.shape});
    const Sample last = wave.samples[wave.samples.size() - 1];
    EXPECT_NEAR(instantaneousHz(last, wave.samples[0], wave.sampleRate), row.wrapHz,
                1e-3 * deviation)
        << shapeName(row.shape);
  }
}

TEST(FmBuilder, SquareHopsBetweenPlusAndMinusTheDeviation) {
  const Waveform wave = buildFm({1000.0, 3000.0, ModShapeSquare});
  const size_t h = 1500;
  for (size_t i = 1; i < 3000; ++i) {
    const double f = instantaneousHz(wave.samples[i - 1], wave.samples[i], wave.sampleRate);
    ASSERT_NEAR(f, i < h ? 3000.0 : -3000.0, 0.3) << i;
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
  // The definition written plainly: float rotors from the double shape, multiplied up in
  // std::complex<float>. The builder must agree bit for bit, drift of the magnitude included.
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
    // And it stays close to the ideal phase, computed in double.
    double phase = 0.0, worst = 0.0;
    for (int i = 0; i < n; ++i) {
      double m = 0.0;
      modShapeValue(shape, i, n, m);
      phase += 2 * pi * static_cast<double>(static_cast<float>(m * a));
      worst =
          std::max(worst, std::abs(std::complex<double>(wave.samples[i]) - std::polar(1.0, phase)));
    }
    EXPECT_LT(worst, 1e-3) << shapeName(shape);
  }
}

TEST(FmBuilder, TriangleOfTwoSamplesBuildsNothing) {
  // N = 2 makes q = 0, where t / q would divide by zero: nothing is built, as for a bad shape.
  const Waveform wave = buildFm({1e7, 1e4, ModShapeTriangle});
  EXPECT_TRUE(wave.samples.empty());
  EXPECT_FALSE(buildFm({1e7, 1e4, ModShapeSquare}).samples.empty());
}

TEST(FmBuilder, UnknownShapeBuildsNothing) {
  for (int shape : {-1, 4, 7}) {
    const Waveform wave = buildFm({1000.0, 1000.0, shape});
    EXPECT_TRUE(wave.samples.empty()) << shape;
    EXPECT_EQ(wave.sampleRate, 0.0) << "neither retuned nor submitted";
  }
}

}  // namespace
