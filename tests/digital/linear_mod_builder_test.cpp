// SPDX-License-Identifier: MIT
// Linear modulation builds: lengths, points, the rail offset, the gap and the refusals.
#include "digital/filter_designs.h"
#include "digital/linear_mod_builder.h"

#include <gtest/gtest.h>

#include <complex>

namespace {

LinearModSettings settingsOf(int mod, std::vector<uint8_t> bits, std::vector<float> taps = {1.0f}) {
  LinearModSettings s;
  s.map = defaultModulationMap(mod);
  s.taps = std::move(taps);
  s.bits = std::move(bits);
  return s;
}

TEST(LinearModBuilder, LengthsAndPointsOfTheSources) {
  std::vector<float> rrc(33);
  designRootRaisedCosine(rrc.data(), 33, 0.35, 4);
  // PN7 twice for 2 bits a symbol: 127 symbols; differential maps play one point more.
  const Waveform qpsk =
      buildLinearMod(settingsOf(DigitalModQPSK, modulationBits(7, 23, "", 2), rrc));
  EXPECT_EQ(qpsk.samples.size(), 508u);
  EXPECT_EQ(qpsk.sampleRate, 4e6);
  EXPECT_EQ(buildLinearMod(settingsOf(DigitalModPi4DQPSK, modulationBits(7, 23, "", 2), rrc))
                .samples.size(),
            512u);
  // DBPSK of "0000": five points, all the first state, each os samples apart at os x its value
  // through a one-tap filter.
  const Waveform dbpsk =
      buildLinearMod(settingsOf(DigitalModDBPSK, modulationBits(-1, 0, "0000", 1)));
  ASSERT_EQ(dbpsk.samples.size(), 20u);
  for (size_t i = 0; i < 20; ++i)
    EXPECT_EQ(dbpsk.samples[i], i % 4 == 0 ? Sample(4.0f, 0.0f) : Sample(0.0f, 0.0f)) << i;
  // Pi/4-DQPSK of "0101": two symbols of value 2, offset -1 each: states 0, 7 and 6.
  const Waveform pi4 =
      buildLinearMod(settingsOf(DigitalModPi4DQPSK, modulationBits(-1, 0, "0101", 2)));
  const std::vector<Sample> circle = defaultModulationMap(DigitalModPi4DQPSK).states;
  ASSERT_EQ(pi4.samples.size(), 12u);
  EXPECT_EQ(pi4.samples[4], 4.0f * circle[7]);
  EXPECT_EQ(pi4.samples[8], 4.0f * circle[6]);
  // "101" at 2 bits a symbol: one symbol, the last bit dropped.
  EXPECT_EQ(
      buildLinearMod(settingsOf(DigitalModQPSK, modulationBits(-1, 0, "101", 2))).samples.size(),
      4u);
}

TEST(LinearModBuilder, RailOffsetAndGap) {
  LinearModSettings plain =
      settingsOf(DigitalModOQPSK, modulationBits(7, 5, "", 2), {0.25f, 1.0f, 0.25f});
  plain.oversample = 2;
  LinearModSettings offset = plain;
  plain.map.offsetQ = false;
  const Waveform a = buildLinearMod(plain), b = buildLinearMod(offset);
  ASSERT_EQ(a.samples.size(), b.samples.size());
  const size_t n = a.samples.size();
  for (size_t i = 0; i < n; ++i) {
    ASSERT_EQ(b.samples[(i + 1) % n].real(), a.samples[i].real()) << "I one sample late, " << i;
    ASSERT_EQ(b.samples[i].imag(), a.samples[i].imag()) << i;
  }
  // 1e-5 s at 2e6 samples a second: 20 zeros, the level still that of the burst.
  offset.offDurationS = 1e-5;
  const Waveform gap = buildLinearMod(offset);
  EXPECT_EQ(gap.samples.size(), n + 20);
  EXPECT_EQ(gap.levelOffsetDb, b.levelOffsetDb);
  EXPECT_EQ(gap.samples.back(), Sample(0.0f, 0.0f));
}

// The shaped build against its impulses (a one-tap build: os x each point, I moved as the map
// says) filtered by a direct circular convolution in double, output i centred on input i:
// records across the pieces the build is made in, shorter than the filter, differential.
TEST(LinearModBuilder, ShapingEqualsDirectCircularConvolution) {
  struct Row {
    int mod, os, sequence;
    const char* bits;
  };
  const Row rows[] = {
      {DigitalModQPSK, 8, 9, ""}, {DigitalModOQPSK, 4, -1, "0110"}, {DigitalModDQPSK, 2, 7, ""}};
  for (const Row& row : rows) {
    std::vector<float> taps(8 * row.os + 1);
    designRootRaisedCosine(taps.data(), static_cast<int>(taps.size()), 0.35, row.os);
    LinearModSettings s = settingsOf(row.mod, modulationBits(row.sequence, 23, row.bits, 2), taps);
    s.oversample = row.os;
    const Waveform shaped = buildLinearMod(s);
    s.taps = {1.0f};
    const std::vector<Sample> x = buildLinearMod(s).samples;
    double sum = 0;
    for (float t : taps) sum += t;
    const int n = static_cast<int>(x.size()), half = static_cast<int>(taps.size()) / 2;
    ASSERT_EQ(shaped.samples.size(), x.size());
    double worst = 0;
    for (int i = 0; i < n; ++i) {
      std::complex<double> acc = 0;
      for (int k = 0; k < static_cast<int>(taps.size()); ++k)
        acc += taps[k] / sum * std::complex<double>(x[((i + half - k) % n + n) % n]);
      worst = std::max(worst, std::abs(std::complex<double>(shaped.samples[i]) - acc));
    }
    EXPECT_LT(worst, 1e-5) << row.mod;
    EXPECT_NEAR(shaped.levelOffsetDb, meanPowerDb(shaped.samples.data(), n), 1e-9) << row.mod;
  }
}

// What only a preset can bring gives no samples.
TEST(LinearModBuilder, RefusesWhatCannotPlay) {
  const std::vector<uint8_t> bits = modulationBits(7, 23, "", 1);
  LinearModSettings threeStates = settingsOf(DigitalModBPSK, bits);
  threeStates.map.states.push_back({0.0f, 1.0f});
  EXPECT_TRUE(buildLinearMod(threeStates).samples.empty());
  EXPECT_TRUE(buildLinearMod(settingsOf(DigitalModBPSK, bits, {1.0f, -1.0f})).samples.empty());
  LinearModSettings noStates = settingsOf(DigitalModDBPSK, bits);
  noStates.map.states.clear();
  EXPECT_TRUE(buildLinearMod(noStates).samples.empty());
  EXPECT_TRUE(
      buildLinearMod(settingsOf(DigitalModQPSK, modulationBits(-1, 0, "1", 2))).samples.empty());
}

}  // namespace
