// SPDX-License-Identifier: MIT
// Pulse, ramp sweep and step sweep builds against the numbers they are defined by, and their
// envelopes and frequencies measured from the samples.
#include "modes/pulse/pulse_builder.h"
#include "modes/ramp_sweep/ramp_sweep_builder.h"
#include "modes/step_sweep/step_sweep_plan.h"
#include "support/ramp_reference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<Sample> toVector(const LongWaveform& wave) {
  return std::vector<Sample>(wave.samples.data(), wave.samples.data() + wave.samples.size());
}

// ---- Pulse ----------------------------------------------------------------------------------

struct PulseCase {
  const char* name;
  double width, period;
  int64_t n, length;
  int edges;
  std::vector<float> head;  // I of the first samples; Q is 0 throughout
};

TEST(PulseBuilder, LayoutOfThePeriod) {
  // S is 4e7 for these widths, so a period of (n + m + 0.5) / 4e7 holds n + m samples.
  const std::vector<PulseCase> cases = {
      {"minimum width", 1e-7, 1e-6, 4, 40, 2, {0, 0.5f, 1, 1, 0.5f, 0, 0, 0}},
      {"width equal to period", 1e-3, 1e-3, 40000, 40000, 0, {1, 1, 1}},
      {"period two samples over", 1e-6, 42.5 / 4e7, 40, 42, 0, {1, 1}},
      {"period three samples over", 1e-6, 43.5 / 4e7, 40, 43, 2, {0, 0.5f, 1}},
      {"maximum width and period", 1.0, 1.0, 40000000, 40000000, 0, {}},
  };
  for (const PulseCase& c : cases) {
    SCOPED_TRACE(c.name);
    const PulseTiming timing = pulseTiming({c.width, c.period, TriggerContinuous});
    EXPECT_EQ(timing.onSamples, c.n);
    EXPECT_EQ(timing.periodSamples, c.length);
    EXPECT_EQ(timing.edgeSamples, c.edges);
    EXPECT_DOUBLE_EQ(timing.sampleRate, 4e7);
    if (c.length > 1000000) continue;  // the layout is what matters here, not 320 MB

    const std::vector<Sample> s = toVector(buildPulse({c.width, c.period, TriggerSingle}));
    ASSERT_EQ(int64_t(s.size()), c.length);
    for (size_t i = 0; i < c.head.size(); ++i)
      EXPECT_EQ(s[i], Sample(c.head[i], 0.0f)) << "sample " << i;
    // On from the edge to n + r - 1, raised-cosine edge mirrored at the end, zero after.
    const int64_t body = c.n + c.edges;
    for (int64_t i = c.edges; i < std::min(body - c.edges, c.length); ++i)
      ASSERT_EQ(s[i], Sample(1, 0)) << i;
    if (c.edges == 2) {
      EXPECT_EQ(s[body - 2], Sample(0.5f, 0));
      EXPECT_EQ(s[body - 1], Sample(0, 0));
    }
    for (int64_t i = body; i < c.length; ++i) ASSERT_EQ(s[i], Sample(0, 0)) << i;
  }
}

TEST(PulseBuilder, WidthAndPeriodMeasuredFromTheEnvelope) {
  // 1.23456789e-4 s is 4938 whole samples at a rate bent to about 3.99978e7.
  const struct {
    double width, period;
  } cases[] = {{2.5e-6, 1e-5}, {3.3e-6, 7.7e-6}, {1e-7, 3e-7}, {1.23456789e-4, 5e-4}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.width);
    const LongWaveform wave = buildPulse({c.width, c.period, TriggerContinuous});
    const std::vector<Sample> one = toVector(wave);
    // Three periods end to end, as the engine replays them.
    std::vector<Sample> s;
    for (int k = 0; k < 3; ++k) s.insert(s.end(), one.begin(), one.end());
    std::vector<int64_t> rising, falling;
    for (size_t i = 1; i < s.size(); ++i) {
      const bool on = std::abs(s[i]) >= 0.5f, wasOn = std::abs(s[i - 1]) >= 0.5f;
      if (on && !wasOn) rising.push_back(int64_t(i));
      if (!on && wasOn) falling.push_back(int64_t(i));
    }
    ASSERT_EQ(rising.size(), 3u);
    ASSERT_EQ(falling.size(), 3u);
    EXPECT_LE(wave.sampleRate, 4e7);
    const double dt = 1.0 / wave.sampleRate;
    // Width at half amplitude is exactly n samples; the period within one sample.
    EXPECT_NEAR((falling[0] - rising[0]) * dt, c.width, c.width * 1e-12);
    // Truncation to whole samples may shorten the period by up to one sample.
    EXPECT_NEAR((rising[1] - rising[0]) * dt, c.period, 1.001 * dt);
    EXPECT_NEAR((rising[2] - rising[1]) * dt, c.period, 1.001 * dt);
    // Full scale during the pulse: the panel's level is the pulse's.
    EXPECT_EQ(s[size_t(rising[0]) + 1], Sample(1, 0));
    EXPECT_EQ(wave.levelOffsetDb, 0.0);
  }
}

TEST(PulseBuilder, NoSamplesWithoutAWholeSample) {
  for (const PulseSettings& s : std::vector<PulseSettings>{{1e-8, 1e-6, TriggerContinuous},
                                                           {0, 1e-3, TriggerContinuous},
                                                           {-1e-3, 1e-3, TriggerContinuous},
                                                           {nan, 1e-3, TriggerContinuous},
                                                           {1e-3, nan, TriggerContinuous},
                                                           {1e-3, 0, TriggerContinuous}}) {
    EXPECT_TRUE(buildPulse(s).samples.empty()) << s.widthSeconds << " " << s.periodSeconds;
  }
}

// ---- Ramp sweep -----------------------------------------------------------------------------

TEST(RampSweepBuilder, SamplesAreThoseOfTheSerialRecursion) {
  const struct {
    const char* name;
    double span, sweepTime, period;
  } cases[] = {
      {"shortest sweep, period one sample longer", 2e7, 1e-6, 1.03e-6},
      {"period equal to sweep time", 2e7, 1e-3, 1e-3},
      {"full span with a long tail", 4e7, 2e-4, 1e-3},
      {"narrow span, odd lengths", 1.0, 3.33e-5, 4.44e-5},
      // Many blocks between looks at the run flag.
      {"long sweep", 1.5e7, 0.03, 0.031},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const LongWaveform wave = buildRampSweep({c.span, c.sweepTime, c.period, TriggerContinuous});
    EXPECT_EQ(wave.sampleRate, 5e7);
    EXPECT_EQ(wave.levelOffsetDb, 0.0);
    const std::vector<Sample> expected = referenceRamp(c.span, c.sweepTime, c.period);
    ASSERT_EQ(wave.samples.size(), int64_t(expected.size()));
    EXPECT_EQ(std::memcmp(wave.samples.data(), expected.data(), expected.size() * sizeof(Sample)),
              0);
  }
}

TEST(RampSweepBuilder, TailAndEdgesAroundTheSweep) {
  // One sample over the sweep: a single zero, and four shaped samples at each end.
  const std::vector<Sample> s = toVector(buildRampSweep({2e7, 1e-6, 1.03e-6, TriggerContinuous}));
  ASSERT_EQ(s.size(), 51u);
  EXPECT_EQ(s[50], Sample(0, 0));
  EXPECT_EQ(s[0], Sample(0, 0));
  EXPECT_EQ(s[49], Sample(0, 0));
  const double weights[] = {0.0, 0.14644660940672624, 0.5, 0.8535533905932737};
  for (int k = 1; k < 4; ++k) {
    EXPECT_NEAR(std::abs(s[size_t(k)]), weights[k], 1e-6) << k;
    EXPECT_NEAR(std::abs(s[size_t(49 - k)]), weights[k], 1e-6) << k;
  }
  EXPECT_NEAR(std::abs(s[4]), 1.0, 1e-6);

  // Period equal to sweep time: no edge, no tail, the chirp starts at (1, 0).
  const std::vector<Sample> full = toVector(buildRampSweep({2e7, 1e-5, 1e-5, TriggerContinuous}));
  ASSERT_EQ(full.size(), 500u);
  EXPECT_EQ(full[0], Sample(1, 0));
  EXPECT_NEAR(std::abs(full[499]), 1.0, 1e-6);
}

TEST(RampSweepBuilder, InstantaneousFrequencyRunsAcrossTheSpan) {
  const struct {
    double span, sweepTime;
  } cases[] = {{2e7, 1e-3}, {4e7, 1e-4}, {1e6, 2e-5}, {1e3, 1e-3}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.span);
    const std::vector<Sample> s =
        toVector(buildRampSweep({c.span, c.sweepTime, c.sweepTime, TriggerContinuous}));
    const auto frequencyAt = [&](size_t k) {
      return std::arg(std::complex<double>(s[k + 1]) * std::conj(std::complex<double>(s[k]))) *
             5e7 / (2 * pi);
    };
    const size_t K = s.size();
    const double step = c.span / double(K);
    // Between samples k and k + 1 the frequency is -span / 2 + k x span / K: from -span / 2 at
    // the start to span / 2 - 2 steps at the last pair. Float samples carry phase noise of
    // about 1e-7 rad, a hertz or so at 5e7.
    for (size_t k : {size_t(0), K / 4, K / 2, K - 2})
      EXPECT_NEAR(frequencyAt(k), -c.span / 2 + k * step, 20.0) << k;
  }
}

TEST(RampSweepBuilder, StopsWhenTheRunFlagFallsAndRefusesEmptySweeps) {
  std::atomic<bool> running{false};
  EXPECT_TRUE(buildRampSweep({2e7, 1e-3, 1e-3, TriggerContinuous}, &running).samples.empty());
  running = true;
  EXPECT_EQ(buildRampSweep({2e7, 1e-3, 1e-3, TriggerContinuous}, &running).samples.size(), 50000);
  for (const RampSweepSettings& s :
       std::vector<RampSweepSettings>{{2e7, 0, 1e-3, TriggerContinuous},
                                      {2e7, 1e-3, 0, TriggerContinuous},
                                      {nan, 1e-3, 1e-3, TriggerContinuous},
                                      {2e7, nan, 1e-3, TriggerContinuous}}) {
    EXPECT_TRUE(buildRampSweep(s).samples.empty())
        << s.spanHz << " " << s.sweepTimeSeconds << " " << s.periodSeconds;
  }
  // A sweep longer than the period is cut to the period.
  EXPECT_EQ(buildRampSweep({2e7, 2e-5, 1e-5, TriggerContinuous}).samples.size(), 500);
}

// ---- Step sweep -----------------------------------------------------------------------------

TEST(StepSweepPlan, PointsLevelsAndDwell) {
  const struct {
    const char* name;
    StepSweepSettings settings;
    double panelLevel;
    std::vector<double> frequencies, levels;
    int64_t dwell;
  } cases[] = {
      {"two points alternate between start and stop",
       {1e9, 2e9, 2, -10, -30, 1e-3, TriggerContinuous, StepSweepFreq},
       -7.5,
       {1e9, 2e9},
       {-7.5, -7.5},
       50000},
      {"stop below start sweeps downwards",
       {3e9, 1e9, 5, -10, -30, 1e-6, TriggerSingle, StepSweepFreqAmplitude},
       -7.5,
       {3e9, 2.5e9, 2e9, 1.5e9, 1e9},
       {-10, -15, -20, -25, -30},
       50},
      {"one point counts as two",
       {1e9, 2e9, 1, 0, 10, 10.0, TriggerContinuous, StepSweepFreqAmplitude},
       0,
       {1e9, 2e9},
       {0, 10},
       500000000},
      {"a dwell without a whole sample plans none",
       {1e9, 2e9, 3, 0, 0, 1e-9, TriggerContinuous, StepSweepFreq},
       -20,
       {1e9, 1.5e9, 2e9},
       {-20, -20, -20},
       0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const StepSweepPlan plan = planStepSweep(c.settings, c.panelLevel);
    ASSERT_EQ(plan.points, int(c.frequencies.size()));
    for (int i = 0; i < plan.points; ++i) {
      EXPECT_DOUBLE_EQ(plan.frequencyAt(i), c.frequencies[size_t(i)]) << i;
      EXPECT_DOUBLE_EQ(plan.levelAt(i), c.levels[size_t(i)]) << i;
    }
    EXPECT_EQ(plan.dwellSamples, c.dwell);
    EXPECT_EQ(plan.singleShot, c.settings.trigger == TriggerSingle);
  }
}

}  // namespace
