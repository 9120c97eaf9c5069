// SPDX-License-Identifier: MIT
// GFSK of modulation index 0.5: packets and the fixed burst demodulated from the instantaneous
// frequency, their rates, lengths, envelopes and ramps.
#include "wireless/ble/ble_waveform.h"
#include "wireless/ble/gfsk_burst.h"
#include "ble_air_bits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using Bits = std::vector<uint8_t>;

// Demodulated back to the packet bits; a long run turns a quarter cycle a symbol; unit
// magnitude; the idle zeros follow at sps x 1e6 (twice that for LE 2M).
TEST(BleGfsk, PacketBitsComeBackAtIndexHalf) {
  Bits pdu(64, 1);  // a run of ones shows the index
  for (int i = 0; i < 96; ++i) pdu.push_back((i * 7 / 3) % 2);
  const struct {
    int phy, sps;
    double idle, rate;
    int zeros;
  } rows[] = {
      {0, 4, 0.001, 4e6, 4000},
      {1, 4, 0.0, 8e6, 0},
      {0, 8, 2.5e-6, 8e6, 20},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.sps);
    BleSettings s;
    s.phy = row.phy;
    s.whitening = false;  // keeps the run
    const Bits packet = buildBlePacketBits(s, pdu);
    const Waveform wave = buildBleWaveform(s, row.sps, row.idle, pdu);
    EXPECT_EQ(wave.sampleRate, row.rate);
    ASSERT_EQ(wave.samples.size(), packet.size() * row.sps + row.zeros);
    const std::vector<Sample> burst(wave.samples.begin(), wave.samples.end() - row.zeros);
    const std::vector<double> phases = symbolPhases(burst, 0, row.sps, packet.size());
    EXPECT_EQ(bitsOf(phases, 0, packet.size()), packet);
    const size_t run = (row.phy ? 16 : 8) + 32 + 20;  // inside the PDU's ones
    EXPECT_NEAR(phases[run], M_PI / 2, 1e-4);
    for (const Sample& v : burst) ASSERT_NEAR(std::abs(v), 1.0f, 1e-4f);
    for (size_t i = burst.size(); i < wave.samples.size(); ++i)
      ASSERT_EQ(wave.samples[i], Sample(0, 0));
    EXPECT_NEAR(wave.levelOffsetDb, 0.0, 1e-4);
  }
}

// 342 bits at 4 samples a symbol, ramped in and out over five samples, silent from 1400 on:
// the header's nine 0-1 pairs, each bit sent three times, stand behind 72 bits of sync, which
// alternate at both ends.
TEST(BleGfsk, FixedBurst) {
  const Waveform wave = buildGfskBurst();
  EXPECT_EQ(wave.sampleRate, 4e6);
  ASSERT_EQ(wave.samples.size(), 2500u);
  for (size_t i = 1400; i < 2500; ++i) ASSERT_EQ(wave.samples[i], Sample(0, 0));
  const float ramp[] = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f, 1.0f};
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(std::abs(wave.samples[i]), ramp[i], 1e-5f);
    EXPECT_NEAR(std::abs(wave.samples[1399 - i]), ramp[i], 1e-5f);
  }
  // The convolution's full length puts symbol k's centre at 4k + 16.
  const std::vector<double> phases = symbolPhases(wave.samples, 16, 4, 342);
  Bits header;
  for (int pair = 0; pair < 9; ++pair) header.insert(header.end(), {0, 0, 0, 1, 1, 1});
  EXPECT_EQ(bitsOf(phases, 72, 54), header);
  // The register from 2 (b = bit 8 XOR bit 3, shifted in) worked by hand, behind its framing;
  // the framing behind the sync.
  EXPECT_EQ(bitsOf(phases, 0, 12), (Bits{0, 1, 0, 1, 0, 0, 1, 0, 0, 0, 1, 1}));
  const Bits tail = bitsOf(phases, 67, 5);
  EXPECT_EQ(Bits(tail.begin() + 1, tail.end()), (tail[0] ? Bits{0, 1, 0, 1} : Bits{1, 0, 1, 0}));
  EXPECT_NEAR(phases[79], -M_PI / 2, 1e-3) << "inside a run of three zeros";
}

}  // namespace
