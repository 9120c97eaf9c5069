// SPDX-License-Identifier: MIT
// FSK builds: the tones of each level count from the instantaneous frequency, length and gap.
#include "digital/filter_designs.h"
#include "digital/fsk_builder.h"
#include "digital/linear_mod_builder.h"
#include "digital/modulation_map.h"

#include <QString>

#include <gtest/gtest.h>

#include <cmath>
#include <algorithm>
#include <complex>

namespace {

// Hz between samples i - 1 and i.
double frequencyAt(const Waveform& w, size_t i) {
  const std::complex<double> step =
      std::complex<double>(w.samples[i]) * std::conj(std::complex<double>(w.samples[i - 1]));
  return std::arg(step) * w.sampleRate / (2 * M_PI);
}

// Runs of eight equal symbols, each level in turn, through a four-tap rectangle at os 4: the
// middle of every run holds the level's tone.
TEST(FskBuilder, EachLevelHoldsItsToneOnARun) {
  struct Row {
    int mod;
    std::vector<double> tonesHz;  // by symbol value
  };
  const Row rows[] = {
      {DigitalMod2FSK, {-9e4, 9e4}},
      {DigitalMod4FSK, {-9e4, -3e4, 3e4, 9e4}},
      {DigitalMod8FSK,
       {-9e4, -9e4 * 5 / 7, -9e4 * 3 / 7, -9e4 / 7, 9e4 / 7, 9e4 * 3 / 7, 9e4 * 5 / 7, 9e4}}};
  for (const Row& row : rows) {
    const int k = fskBitsPerSymbol(row.mod);
    std::vector<uint8_t> bits;
    for (uint32_t symbol = 0; symbol < row.tonesHz.size(); ++symbol)
      for (int repeat = 0; repeat < 8; ++repeat)
        for (int b = 0; b < k; ++b) bits.push_back((symbol >> b) & 1);
    const Waveform w = buildFsk({row.mod, {1, 1, 1, 1}, 4, 1e6, 9e4, 0.0, bits});
    ASSERT_EQ(w.samples.size(), row.tonesHz.size() * 32) << row.mod;
    EXPECT_EQ(w.sampleRate, 4e6);
    EXPECT_NEAR(w.levelOffsetDb, 0.0, 1e-4) << "float products drift only slightly";
    for (size_t symbol = 0; symbol < row.tonesHz.size(); ++symbol)
      EXPECT_NEAR(frequencyAt(w, symbol * 32 + 16), row.tonesHz[symbol], 1.0)
          << row.mod << " symbol " << symbol;
  }
}

// 2FSK through a root-raised-cosine filter against its phase from a direct circular convolution
// of the impulses in double, output i centred on input i: a record across the pieces the build
// is made in, and one shorter than the filter.
TEST(FskBuilder, PhaseFollowsTheDirectlyShapedTrack) {
  for (const std::vector<uint8_t>& bits :
       {modulationBits(9, 23, "", 1), std::vector<uint8_t>{0, 1}}) {
    const int os = 8, taps = 8 * os + 1;
    std::vector<float> h(taps);
    designRootRaisedCosine(h.data(), taps, 0.35, os);
    const Waveform w = buildFsk({DigitalMod2FSK, h, os, 1e6, 1e5, 0.0, bits});
    const int n = static_cast<int>(bits.size()) * os;
    ASSERT_EQ(w.samples.size(), static_cast<size_t>(n));
    double sum = 0;
    for (float t : h) sum += t;
    double phase = 0, worst = 0;
    for (int i = 0; i < n; ++i) {
      for (int k = 0; k < taps; ++k) {
        const int j = ((i + taps / 2 - k) % n + n) % n;
        if (j % os == 0) phase += 2 * M_PI * h[k] * (os / sum) * (bits[j / os] ? 1e5 : -1e5) / 8e6;
      }
      const std::complex<double> expected = std::polar(1.0, phase);
      worst = std::max(
          worst, std::abs(std::arg(std::complex<double>(w.samples[i]) * std::conj(expected))));
    }
    EXPECT_LT(worst, 1e-4) << bits.size() << " symbols";
  }
}

TEST(FskBuilder, GapAndRefusals) {
  const std::vector<uint8_t> bits(16, 1);
  const Waveform w = buildFsk({DigitalMod16FSK, {1, 1, 1, 1}, 4, 1e6, 1e5, 5e-6, bits});
  ASSERT_EQ(w.samples.size(), 16u + 20u) << "4 symbols, then 5 us at 4e6";
  EXPECT_EQ(w.samples.back(), Sample(0.0f, 0.0f));
  EXPECT_TRUE(buildFsk({DigitalModQPSK, {1, 1}, 4, 1e6, 1e5, 0.0, bits}).samples.empty());
  EXPECT_TRUE(buildFsk({DigitalMod2FSK, {1, -1}, 4, 1e6, 1e5, 0.0, bits}).samples.empty());
  EXPECT_TRUE(buildFsk({DigitalMod16FSK, {1}, 4, 1e6, 1e5, 0.0, {1, 0, 1}}).samples.empty());
}

}  // namespace
