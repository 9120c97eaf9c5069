// SPDX-License-Identifier: MIT
// The non-HT frame: its length for every rate, SIGNAL and DATA read back, and the bit source fill.
#include "ofdm_bin.h"
#include "wireless/convolutional_encoder.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

Sample bin(const ComplexVector& frame, int start, int k) {
  return ofdmBin(frame, start, k);
}

// The 48 data subcarriers of a BPSK symbol read as bits, ascending k.
std::string bpskBits(const ComplexVector& frame, int start) {
  std::string bits;
  for (int k = -26; k <= 26; ++k)
    if (k != 0 && std::abs(k) != 7 && std::abs(k) != 21)
      bits += bin(frame, start, k).real() > 0 ? '1' : '0';
  return bits;
}

std::string text(const BitVector& bits) {
  std::string s;
  for (uint8_t b : bits) s += static_cast<char>('0' + b);
  return s;
}

NonHtFrameParams params(int rateIndex, int bytes) {
  NonHtFrameParams p;
  p.rateCode = nonHtRateRow(rateIndex).rateCode;
  p.rate = nonHtRateRow(rateIndex).rate;
  p.windowLength = 0;  // unblended, so each symbol's body is its own inverse FFT
  p.data.assign(static_cast<size_t>(bytes) * 8, 0);
  for (size_t i = 0; i < p.data.size(); ++i) p.data[i] = static_cast<uint8_t>((i * 5 + i / 7) & 1);
  return p;
}

TEST(WlanNonHt, FrameIs400PlusEightyPerSymbolAtEveryRate) {
  for (int r = 0; r < nonHtRateCount; ++r)
    for (int bytes : {1, 100, 4095}) {
      const int dbps = nonHtRateRow(r).rate.dataBitsPerSymbol;
      NonHtFrameParams p = params(r, bytes);
      p.windowLength = 16;
      EXPECT_EQ(buildNonHtFrame(p).size(), 400u + 80u * ((22 + 8 * bytes + dbps - 1) / dbps)) << r;
    }
  NonHtFrameParams odd = params(0, 0);  // 9 bits pad to 2 bytes: 38 bits, 2 symbols at 6 Mb/s
  odd.data.assign(9, 1);
  EXPECT_EQ(buildNonHtFrame(odd).size(), 560u);
  // The mode's samples: the frame at -6 dB RMS, then truncate(idle x rate) zeros.
  const double idle[][3] = {
      {0.001, 20e6, 20000}, {0.001, 5e6, 5000}, {1.23e-6, 20e6, 24}, {-1, 20e6, 0}};
  for (const auto& row : idle) {
    NonHtSettings s;
    s.sourceBits = {1, 0, 0, 1, 1};
    s.bytes = 100;
    s.idleSeconds = row[0];
    s.sampleRate = row[1];
    const ComplexVector out = buildNonHtSamples(s);
    const size_t frame = 400 + 80 * 4;  // 822 bits at 54 Mb/s
    ASSERT_EQ(out.size(), frame + static_cast<size_t>(row[2])) << row[0];
    double power = 0;
    for (size_t i = 0; i < frame; ++i) power += std::norm(out[i]);
    EXPECT_NEAR(10 * std::log10(power / frame), -6.0, 1e-3);
    EXPECT_EQ(ComplexVector(out.begin() + frame, out.end()), ComplexVector(out.size() - frame));
  }
}

// The worked example's SIGNAL (36 Mb/s, 100 bytes), interleaved, whatever the DATA switches say.
TEST(WlanNonHt, SignalSymbolIsTheStandardsExampleAndIgnoresTheDataSwitches) {
  for (int flags = 0; flags < 4; ++flags) {
    NonHtFrameParams p = params(5, 100);
    p.interleaved = flags & 1;
    p.scrambled = flags & 2;
    EXPECT_EQ(bpskBits(buildNonHtFrame(p), 320), "100101001101000000010100100000110010010010010100")
        << flags;
  }
}

// DATA at 6 Mb/s read back uninterleaved: SERVICE, PSDU, pad and tail all zero go through the
// scrambler when asked and are not cleared after it; pilots follow p_1, p_2, .. and wrap at 127.
TEST(WlanNonHt, DataSymbolsCarryTheScrambledStreamAndPolarityPilots) {
  struct Row {
    bool scrambled;
    int bytes;
  } rows[] = {{false, 1}, {true, 1}, {true, 4095}};
  for (const Row& row : rows) {
    NonHtFrameParams p = params(0, row.bytes);
    p.data.assign(p.data.size(), 0);
    p.scrambled = row.scrambled;
    p.interleaved = false;
    const ComplexVector frame = buildNonHtFrame(p);
    const int symbols = static_cast<int>(frame.size() - 400) / 80;
    BitVector stream(static_cast<size_t>(symbols) * 24, 0);
    if (row.scrambled) stream = scrambleBits(93, stream);
    const std::string coded = text(ConvolutionalEncoder(0).encode(stream));
    for (int n = 0; n < symbols; ++n) {
      const int start = 400 + 80 * n;
      ASSERT_EQ(bpskBits(frame, start), coded.substr(48 * n, 48)) << row.bytes << " " << n;
      const float polarity = pilotPolarity((n + 1) % 127);
      ASSERT_NEAR(bin(frame, start, -21).real(), polarity, 1e-4) << n;
      ASSERT_NEAR(bin(frame, start, 21).real(), -polarity, 1e-4) << n;
    }
  }
}

TEST(WlanNonHt, SourceIsCutOrRepeatedAndAnEmptyOneGivesNoSamples) {
  EXPECT_EQ(text(*psduFromSource({1, 0, 1}, 1)), "10110110");
  EXPECT_EQ(text(*psduFromSource({1, 1, 0, 0, 1, 0, 1, 0, 1, 1}, 1)), "11001010");
  EXPECT_EQ(text(*psduFromSource({}, 0)), "");
  EXPECT_FALSE(psduFromSource({}, 64).has_value());
  NonHtSettings s;  // a custom pattern without a '0' or '1'
  s.bytes = 4095;
  EXPECT_TRUE(buildNonHtSamples(s).empty());
}

}  // namespace
