// SPDX-License-Identifier: MIT
// WLAN symbol blocks: training fields, mapping, placement, join smoothing and level.
#include "dsp/vec_fft.h"
#include "wireless/frame_shaping.h"
#include "wireless/rate_params.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/training_fields.h"
#include "wireless/wlan_mapper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace {

struct Expected {
  int t;
  float re, im;
};

// Time samples printed, to three decimals, in the standard's worked example (its t = 0 is
// windowed by one half, so the unwindowed value is given here at t = 16 or t = 32 instead).
TEST(WlanOfdm, LegacyTrainingFieldsMatchTheStandardsSamples) {
  WlanFft fft;
  const ComplexVector stf = legacyStf(fft), ltf = legacyLtf(fft);
  ASSERT_EQ(stf.size(), 160u);
  ASSERT_EQ(ltf.size(), 160u);
  const Expected stfRows[] = {
      {1, -0.132f, 0.002f},  {2, -0.013f, -0.079f}, {3, 0.143f, -0.013f},  {4, 0.092f, 0.000f},
      {5, 0.143f, -0.013f},  {6, -0.013f, -0.079f}, {7, -0.132f, 0.002f},  {8, 0.046f, 0.046f},
      {9, 0.002f, -0.132f},  {10, -0.079f, -0.013f}, {11, -0.013f, 0.143f}, {12, 0.000f, 0.092f},
      {13, -0.013f, 0.143f}, {14, -0.079f, -0.013f}, {15, 0.002f, -0.132f}, {16, 0.046f, 0.046f}};
  const Expected ltfRows[] = {
      {1, 0.012f, -0.098f},  {2, 0.092f, -0.106f},  {3, -0.092f, -0.115f}, {4, -0.003f, -0.054f},
      {5, 0.075f, 0.074f},   {6, -0.127f, 0.021f},  {7, -0.122f, 0.017f},  {8, -0.035f, 0.151f},
      {9, -0.056f, 0.022f},  {10, -0.060f, -0.081f}, {11, 0.070f, -0.014f}, {12, 0.082f, -0.092f},
      {13, -0.131f, -0.065f}, {14, -0.057f, -0.039f}, {15, 0.037f, -0.098f}, {32, 0.156f, 0.000f}};
  for (const Expected& e : stfRows) {
    EXPECT_NEAR(stf[e.t].real(), e.re, 6e-4) << "STF " << e.t;
    EXPECT_NEAR(stf[e.t].imag(), e.im, 6e-4) << "STF " << e.t;
  }
  for (const Expected& e : ltfRows) {
    EXPECT_NEAR(ltf[e.t].real(), e.re, 6e-4) << "LTF " << e.t;
    EXPECT_NEAR(ltf[e.t].imag(), e.im, 6e-4) << "LTF " << e.t;
  }
  for (int t = 0; t < 80; ++t) EXPECT_EQ(stf[t], stf[t + 80]) << t;
  for (int t = 0; t < 64; ++t) EXPECT_EQ(ltf[t + 32], ltf[t + 96]) << t;
}

// Forward FFT of the HT fields' bodies gives back their tables: the extra edge subcarriers of
// the long field, and the short field's (1+j) table at sqrt(1/2) instead of sqrt(13/6).
TEST(WlanOfdm, HtTrainingFieldsCarryTheirTables) {
  WlanFft fft;
  const ComplexVector stf = htStf(fft), ltf = htLtf(fft);
  ASSERT_EQ(stf.size(), 80u);
  ASSERT_EQ(ltf.size(), 80u);
  auto forward = vecFftCreate(6, VecFftNoScale, 0);
  Sample stfBins[64], ltfBins[64];
  vecFftForward32fc(stf.data() + 16, stfBins, forward.get());
  vecFftForward32fc(ltf.data() + 16, ltfBins, forward.get());
  const float h = std::sqrt(0.5f);
  struct Row {
    const Sample* bins;
    int k;
    Sample value;
  } rows[] = {{ltfBins, -28, {1, 0}}, {ltfBins, -27, {1, 0}}, {ltfBins, -26, {1, 0}},
              {ltfBins, 27, {-1, 0}}, {ltfBins, 28, {-1, 0}}, {ltfBins, 0, {0, 0}},
              {stfBins, -24, {h, h}}, {stfBins, 4, {-h, -h}}, {stfBins, 28, {0, 0}}};
  for (const Row& row : rows) {
    const Sample got = row.bins[(row.k + 64) % 64];
    EXPECT_NEAR(std::abs(got - row.value), 0.0f, 1e-5f) << row.k;
  }
}

TEST(WlanOfdm, MappersUseTheirLevelsAndScales) {
  struct Row {
    int modulation;
    BitVector bits;
    float i, q, scale;
  } rows[] = {
      {WlanBpsk, {1}, 1, 0, 1},
      {9, {0}, -1, 0, 1},
      {WlanQpsk, {1, 0}, 1, -1, 1 / std::sqrt(2.0f)},
      {WlanQam16, {1, 0, 1, 1}, 3, 1, 1 / std::sqrt(10.0f)},
      {WlanQam64, {0, 1, 1, 1, 0, 0}, -3, 7, 1 / std::sqrt(42.0f)},
      {WlanQam256, {1, 1, 1, 0, 0, 1, 1, 0, 1, 1}, 7, -7, 1 / std::sqrt(170.0f)},
  };
  for (const Row& row : rows) {
    const ComplexVector points = mapBits(row.bits, row.modulation);
    ASSERT_EQ(points.size(), 1u) << row.modulation;  // spare bits are dropped
    EXPECT_FLOAT_EQ(points[0].real(), row.i * row.scale) << row.modulation;
    EXPECT_FLOAT_EQ(points[0].imag(), row.q * row.scale) << row.modulation;
  }
}

TEST(WlanOfdm, PlacementPutsDataAndPilotsOnTheirSubcarriers) {
  ComplexVector data(52);
  for (int i = 0; i < 52; ++i) data[i] = Sample(float(i + 1), 0.0f);
  const float legacyPilots[4] = {2, 2, 2, 2};
  const HtPilots rotated = htPilots(1);
  const ComplexVector legacy = placeLegacySymbol(data, legacyPilots);
  const ComplexVector ht = placeHtSymbol(data, rotated.value);
  struct Row {
    const ComplexVector* freq;
    int k;
    float value;
  } rows[] = {{&legacy, -26, 1},  {&legacy, -21, 2}, {&legacy, -20, 6},  {&legacy, 0, 0},
              {&legacy, 1, 25},   {&legacy, 21, -2}, {&legacy, 26, 48},  {&legacy, 27, 0},
              {&ht, -28, 1},      {&ht, -21, 1},     {&ht, -7, 1},       {&ht, 7, -1},
              {&ht, 21, 1},       {&ht, 1, 27},      {&ht, 28, 52},      {&ht, 0, 0}};
  for (const Row& row : rows) EXPECT_EQ((*row.freq)[row.k + 32], Sample(row.value, 0.0f)) << row.k;
}

ComplexVector ramp(int n) {
  ComplexVector frame(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) frame[i] = Sample(float(i), float((i * 7919) % 101));
  return frame;
}

TEST(WlanOfdm, JoinWindowLengthIsEvenedAndCut) {
  const ComplexVector frame = ramp(400 + 3 * 80);
  const auto smooth = [&](int w) { return smoothSymbolJoins(frame, 64, 5, 3, false, w); };
  EXPECT_EQ(smooth(0), frame);
  EXPECT_EQ(smooth(-3), frame);
  const int same[][2] = {{1, 2}, {3, 4}, {15, 16}, {17, 16}, {40, 16}};
  for (const auto& pair : same) EXPECT_EQ(smooth(pair[0]), smooth(pair[1])) << pair[0];
  EXPECT_NE(smooth(14), smooth(16));
  // Counts that claim more symbols than the frame holds touch nothing outside it.
  EXPECT_EQ(smoothSymbolJoins(ramp(3), 64, 5, 9, false, 16), ramp(3));
  // W = 2 leaves one sample of each side: one FFT period back before the join, ahead after it.
  const ComplexVector two = smooth(2);
  for (int p : {80, 320, 400, 560}) {
    EXPECT_EQ(two[p - 1], frame[p - 1 - 64]) << p;
    EXPECT_EQ(two[p], frame[p + 64]) << p;
  }
}

TEST(WlanOfdm, ShortGuardMovesOnlyTheDataJoins) {
  const int slots = 8, symbols = 4, w = 16, h = w / 2;
  const ComplexVector frame = ramp(slots * 80 + symbols * 72);
  const ComplexVector out = smoothSymbolJoins(frame, 64, slots, symbols, true, w);
  std::set<int> expected;
  for (int s = 1; s < slots; ++s)
    for (int i = -h; i < h; ++i) expected.insert(s * 80 + i);
  for (int d = 0; d < symbols; ++d)
    for (int i = -h; i < h; ++i) expected.insert(slots * 80 + d * 72 + i);
  for (int i = 1; i < h; ++i) expected.insert(static_cast<int>(frame.size()) - i);
  std::set<int> changed;
  for (int i = 0; i < static_cast<int>(frame.size()); ++i)
    if (out[i] != frame[i]) changed.insert(i);
  EXPECT_EQ(changed, expected);
  // 72 apart the windows reach into the previous join's result, which each join must read as
  // already blended: a join's first sample is the sample one FFT period back as it now stands.
  for (int d = 0; d < symbols; ++d) {
    const int start = slots * 80 + d * 72 - h;
    EXPECT_EQ(out[start], out[start - 64]) << d;
  }
}

TEST(WlanOfdm, NormaliseRmsSetsTheLevel) {
  const ComplexVector frame = ramp(333);
  for (double db : {-6.0, 0.0, 3.0}) {
    const ComplexVector out = normaliseRms(frame, db);
    double sum = 0;
    for (const Sample& s : out) sum += std::norm(s);
    EXPECT_NEAR(10 * std::log10(sum / out.size()), db, 1e-4) << db;
  }
}

}  // namespace
