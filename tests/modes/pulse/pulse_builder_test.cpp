// SPDX-License-Identifier: MIT
// The pulse period against the numbers that define it: counts, rate, edges and level.
#include "modes/pulse/pulse_builder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

TEST(PulseBuilder, LayoutOfThePeriod) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* name;
    double width, period;
    int64_t n, length;
    int edges;
    double rate;
    std::vector<float> head;  // I of the first samples; Q is 0 throughout
  } cases[] = {
      // A period of (n + m + 0.5) / 4e7 holds n + m samples.
      {"minimum width", 1e-7, 1e-6, 4, 40, 2, 4e7, {0, 0.5f, 1, 1, 0.5f, 0, 0, 0}},
      {"width equal to period", 1e-3, 1e-3, 40000, 40000, 0, 4e7, {1, 1, 1}},
      {"period two samples over", 1e-6, 42.5 / 4e7, 40, 42, 0, 4e7, {1, 1}},
      {"period three samples over", 1e-6, 43.5 / 4e7, 40, 43, 2, 4e7, {0, 0.5f, 1}},
      // 4938 whole samples: the rate is bent to 1 / (width / 4938).
      {"rate bent", 1.23456789e-4, 5e-4, 4938, 19998, 2, 39997800.36397998, {0, 0.5f, 1}},
      {"maximum width and period", 1.0, 1.0, 40000000, 40000000, 0, 4e7, {}},
      {"no whole sample", 1e-8, 1e-6, 0, 0, 0, 0, {}},
      {"no period", 1e-3, nan, 0, 0, 0, 0, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const PulseTiming timing = pulseTiming({c.width, c.period, TriggerContinuous});
    EXPECT_EQ(timing.onSamples, c.n);
    EXPECT_EQ(timing.periodSamples, c.length);
    EXPECT_EQ(timing.edgeSamples, c.edges);
    EXPECT_DOUBLE_EQ(timing.sampleRate, c.rate);
    if (c.length > 1000000) continue;  // the layout is what matters here, not 320 MB

    const LongWaveform wave = buildPulse({c.width, c.period, TriggerSingle});
    EXPECT_EQ(wave.sampleRate, timing.sampleRate);
    EXPECT_EQ(wave.levelOffsetDb, 0.0) << "the panel's level is that of the pulse";
    ASSERT_EQ(wave.samples.size(), c.length);
    const Sample* s = wave.samples.data();
    for (size_t i = 0; i < c.head.size(); ++i) EXPECT_EQ(s[i], Sample(c.head[i], 0)) << i;
    // On from the edge to n + r - 1, the edge mirrored at the end, zero after.
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

}  // namespace
