// SPDX-License-Identifier: MIT
// Multitone builder: rate, buffer and tone rules, the comb's spectrum, agreement with
// tone-by-tone synthesis, progress hooks, and settings that build nothing.
#include "modes/multitone/multitone_builder.h"

#include "dsp/fftw_plan.h"
#include "dsp/vec_random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr double kPi = 3.14159265358979323846;

MultitoneSettings comb(int count, double spacingHz, int phase = MultiTonePhaseParabolic,
                       double notchHz = 0.0) {
  MultitoneSettings s;
  s.toneCount = count;
  s.spacingHz = spacingHz;
  s.phase = phase;
  s.notchWidthHz = notchHz;
  s.seed = count;
  return s;
}

std::string name(const MultitoneSettings& s) {
  return "N " + std::to_string(s.toneCount) + " D " + std::to_string(s.spacingHz) + " Z " +
         std::to_string(s.notchWidthHz) + " law " + std::to_string(s.phase);
}

TEST(MultitoneBuilder, RateLengthAndFrequencies) {
  struct Row {
    int count;
    double spacing, rate;
    int64_t length;
    std::vector<double> cyclesPerSample;  // checked where given
  };
  const Row rows[] = {
      {1, 1e6, 2e6, 1024, {0.0}},
      {2, 1e6, 2e6, 2048, {-0.25, 0.25}},  // 0.5e6 < 0.625e6 raises j to 2
      {3, 1e6, 4e6, 2048, {-0.25, 0.0, 0.25}},
      {4, 1e6, 4e6, 4096, {-0.375, -0.125, 0.125, 0.375}},
      {5, 1e5, 6e5, 3072, {-1.0 / 3, -1.0 / 6, 0.0, 1.0 / 6, 1.0 / 3}},
      {9, 1e6, 1e7, 5120, {}},  // 5 D is not below 4 D x 1.25
      {4001, 1e4, 5e7, 2560000, {}},
      {4000, 1e4, 4.999e7, 5118976, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.count);
    const MultitoneGrid grid = multitoneGrid(row.count, row.spacing);
    ASSERT_TRUE(grid.valid);
    EXPECT_DOUBLE_EQ(grid.sampleRate, row.rate);
    EXPECT_EQ(grid.length, row.length);
    // A whole number of periods of the spacing in the buffer: it joins itself.
    const double periods = double(grid.length) * row.spacing / grid.sampleRate;
    EXPECT_EQ(periods, std::round(periods));
    const std::vector<float> f = multitoneFrequencies(grid, row.count, row.spacing);
    for (size_t i = 0; i < row.cyclesPerSample.size(); ++i)
      EXPECT_EQ(f[i], float(row.cyclesPerSample[i])) << i;
  }
}

TEST(MultitoneBuilder, PhaseLaws) {
  // Parabolic by hand: (k - 1)^2 pi / N + pi / 4 modulo 2 pi, k = i - N / 2.
  const std::vector<double> three = {4 * kPi / 3 + kPi / 4, kPi / 3 + kPi / 4, kPi / 4};
  const std::vector<double> four = {kPi / 2, 5 * kPi / 4, kPi / 2, kPi / 4};
  for (const auto& expected : {three, four}) {
    const std::vector<float> p = multitonePhases(MultiTonePhaseParabolic, int(expected.size()), 1);
    for (size_t i = 0; i < p.size(); ++i) EXPECT_NEAR(p[i], expected[i], 1e-6) << i;
  }
  std::vector<float> random(300);
  vecRandUniform32f(random.data(), 300, 0.0f, 6.2831855f, 77u);
  EXPECT_EQ(multitonePhases(MultiTonePhaseRandom, 300, 77), random);
  for (int law : {int(MultiTonePhaseFixed), 7})
    EXPECT_EQ(multitonePhases(law, 3, 1), std::vector<float>(3, 0.0f));
}

// The comb as an analyser sees it: the expected tones on the spacing's grid, all within
// 0.01 dB of each other, nothing else above -80 dB, and the correction equal to their power.
TEST(MultitoneBuilder, SpectrumHoldsEqualTonesOnTheGrid) {
  const std::pair<MultitoneSettings, int> rows[] = {
      {comb(1, 1e6), 1},
      {comb(3, 1e6), 3},
      {comb(2, 1e6, MultiTonePhaseFixed), 2},
      {comb(4, 1e6, MultiTonePhaseRandom), 4},
      {comb(3, 1e6, MultiTonePhaseFixed, 2e6), 2},  // 0.25 is not inside a half notch of 0.25
      {comb(201, 1e5, MultiTonePhaseRandom), 201},
      {comb(400, 5e4, MultiTonePhaseParabolic, 2e6), 360},
      {comb(4001, 1e4), 4001},
  };
  for (const auto& [s, tones] : rows) {
    SCOPED_TRACE(name(s));
    const Waveform wave = buildMultitone(s);
    const int64_t length = multitoneGrid(s.toneCount, s.spacingHz).length;
    ASSERT_EQ(int64_t(wave.samples.size()), length);
    std::vector<Sample> in(wave.samples), out(in.size());
    fftwf_plan plan = fftwPlanDft(int(length), reinterpret_cast<fftwf_complex*>(in.data()),
                                  reinterpret_cast<fftwf_complex*>(out.data()), FFTW_FORWARD);
    fftwf_execute(plan);
    fftwDestroyPlan(plan);
    std::vector<double> power(out.size());
    for (size_t k = 0; k < out.size(); ++k)
      power[k] = std::norm(std::complex<double>(out[k])) / double(length) / double(length);
    const double strongest = *std::max_element(power.begin(), power.end());

    std::vector<double> found;
    double rest = 0.0, sum = 0.0;
    for (size_t k = 0; k < power.size(); ++k) {
      if (power[k] < strongest * 1e-6) {
        rest = std::max(rest, power[k]);
        continue;
      }
      sum += power[k];
      EXPECT_LT(10 * std::log10(strongest / power[k]), 0.01) << k;
      const double bin = k < power.size() / 2 ? double(k) : double(k) - double(length);
      found.push_back(bin * wave.sampleRate / double(length));
    }
    ASSERT_EQ(int(found.size()), tones);
    EXPECT_LT(rest, strongest * 1e-8);
    for (double hz : found) {
      // Multiples of D (odd N) or odd multiples of D / 2 (even N), outside the notch.
      const double steps = hz / s.spacingHz - (s.toneCount % 2 ? 0.0 : 0.5);
      EXPECT_NEAR(steps, std::round(steps), 1e-9) << hz;
      EXPECT_GE(std::fabs(hz), s.notchWidthHz / 2 * (1 - 1e-12)) << hz;
    }
    EXPECT_NEAR(wave.levelOffsetDb, 10 * std::log10(sum), 1e-3);
  }
}

TEST(MultitoneBuilder, NotchOverEveryToneLeavesZerosAndAnInfiniteCorrection) {
  for (double notch : {3e6, 2.000001e6, HUGE_VAL}) {
    SCOPED_TRACE(notch);
    for (const Waveform& wave :
         {buildMultitone(comb(3, 1e6, MultiTonePhaseParabolic, notch)),
          buildMultitoneDirect(comb(3, 1e6, MultiTonePhaseParabolic, notch))}) {
      ASSERT_EQ(wave.samples.size(), 2048u);
      EXPECT_TRUE(std::all_of(wave.samples.begin(), wave.samples.end(),
                              [](Sample v) { return v == Sample(); }));
      EXPECT_EQ(wave.levelOffsetDb, -HUGE_VAL);
    }
  }
}

// Where j is a power of two the tone kernel's float frequencies are exact, and the inverse FFT
// of a period must give the samples of tone-by-tone synthesis within float rounding. (Elsewhere
// those frequencies are rounded, and the synthesis drifts from the exact grid.)
TEST(MultitoneBuilder, AgreesWithToneByToneSynthesis) {
  std::vector<MultitoneSettings> dyadic = {
      comb(7, 1e5, MultiTonePhaseParabolic, 1e5 + 1),  // centre notched
      comb(13, 1e3, MultiTonePhaseRandom, 4.5e3)};     // five notched
  for (int count : {1, 2, 3, 4, 7, 13, 26, 51})
    for (int law : {MultiTonePhaseFixed, MultiTonePhaseRandom, MultiTonePhaseParabolic})
      dyadic.push_back(comb(count, 1e6 / count, law));
  for (const MultitoneSettings& s : dyadic) {
    SCOPED_TRACE(name(s));
    const int64_t j = multitoneGrid(s.toneCount, s.spacingHz).j;
    ASSERT_EQ(j & (j - 1), 0);
    const Waveform fast = buildMultitone(s), direct = buildMultitoneDirect(s);
    ASSERT_EQ(fast.samples.size(), direct.samples.size());
    for (size_t i = 0; i < fast.samples.size(); ++i)
      ASSERT_LT(std::abs(fast.samples[i] - direct.samples[i]), 2e-6f) << i;
    EXPECT_NEAR(fast.levelOffsetDb, direct.levelOffsetDb, 1e-4);
  }
}

// Settings only an unclamped preset can hold build nothing, and nothing hangs.
TEST(MultitoneBuilder, SettingsWithoutACombBuildNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const MultitoneSettings& s :
       {comb(0, 1e6), comb(INT_MIN, 1e6), comb(3, 0.0),
        comb(4, -1e6) /* the search would never end */, comb(3, nan), comb(3, HUGE_VAL),
        comb(4, 5e-324) /* D / 2 is 0 */, comb(3, 1e308), comb(100000, 1.0), comb(INT_MAX, 1e4)}) {
    SCOPED_TRACE(name(s));
    EXPECT_TRUE(buildMultitone(s).samples.empty());
    EXPECT_TRUE(buildMultitoneDirect(s).samples.empty());
  }
  EXPECT_EQ(buildMultitone(comb(3, 1e6, 0, nan)).levelOffsetDb,
            buildMultitone(comb(3, 1e6, 0)).levelOffsetDb);
  EXPECT_FALSE(
      buildMultitone(comb(5000, 1e5)).samples.empty());  // beyond the slots' limits, as it stands
}

// Show, a percentage every N / 20 tones that aren't notched, hide; nothing up to 200 tones;
// an abandoned build hides what it showed.
TEST(MultitoneBuilder, ProgressBracketsLongBuilds) {
  auto steps = [](int to, int skipFrom = 200, int skipTo = 200) {
    std::string s;
    for (int p = 0; p <= to; p += 5)
      if (p < skipFrom || p > skipTo) s += std::to_string(p) + " ";
    return s;
  };
  struct Row {
    MultitoneSettings settings;
    int polls;  // keepGoing answers true this often, -1: always
    std::string expected;
  };
  const Row rows[] = {
      {comb(200, 1e4), -1, ""},
      {comb(400, 1e4), -1, "show " + steps(95) + "hide"},
      // Tones 180 to 219 are notched: no percentage for 180 and 200.
      {comb(400, 5e4, MultiTonePhaseFixed, 2e6), -1, "show " + steps(95, 45, 50) + "hide"},
      {comb(400, 1e4), 45, "show " + steps(10) + "hide"},
  };
  for (const Row& row : rows) {
    for (auto build : {&buildMultitone, &buildMultitoneDirect}) {
      SCOPED_TRACE(row.expected);
      std::string log;
      int polls = 0;
      MultitoneProgress progress{
          [&] { log += "show "; }, [&](int p) { log += std::to_string(p) + " "; },
          [&] { log += "hide"; }, [&] { return row.polls < 0 || polls++ < row.polls; }};
      EXPECT_EQ(build(row.settings, progress).samples.empty(), row.polls >= 0);
      EXPECT_EQ(log, row.expected);
    }
  }
}

}  // namespace
