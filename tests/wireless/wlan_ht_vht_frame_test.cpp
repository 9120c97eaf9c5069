// SPDX-License-Identifier: MIT
// HT and VHT frames: lengths for every MCS and guard, the SIG fields and their CRC, the lengths
// they announce, and the SIG symbols' rotation and pilots read back.
#include "ofdm_bin.h"
#include "wireless/convolutional_encoder.h"
#include "wireless/ht_symbols.h"
#include "wireless/wlan_ht/ht_frame_builder.h"
#include "wireless/wlan_vht/vht_frame_builder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string text(const BitVector& bits) {
  std::string s;
  for (uint8_t b : bits) s += static_cast<char>('0' + b);
  return s;
}

BitVector psdu(int bytes) {
  BitVector data(static_cast<size_t>(bytes) * 8);
  for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>((i * 3 + i / 5) & 1);
  return data;
}

// N_DBPS of the 20 MHz rows, MCS 0 to 8, as the standard's tables give them.
const int dataBitsPerSymbol[] = {26, 52, 78, 104, 156, 208, 234, 260, 312};

TEST(WlanHtVht, FrameIsThePreamblePlusOneSymbolLengthPerSymbol) {
  for (int vht = 0; vht < 2; ++vht)
    for (int mcs = 0; mcs < (vht ? 9 : 8); ++mcs)
      for (int bytes : {0, 1, 100, 4095})
        for (bool shortGuard : {false, true}) {
          VhtFrameParams p;
          p.mcs = mcs;
          p.shortGuard = shortGuard;
          p.data = psdu(bytes);
          const size_t size = vht ? buildVhtFrame(p).size() : buildHtFrame(p).size();
          const int dbps = dataBitsPerSymbol[mcs];
          const size_t symbols = static_cast<size_t>((22 + 8 * bytes + dbps - 1) / dbps);
          EXPECT_EQ(size, (vht ? 800u : 720u) + (shortGuard ? 72u : 80u) * symbols)
              << vht << " " << mcs << " " << bytes << " " << shortGuard;
        }
}

// HT-SIG of MCS 15, 40 MHz, 100 bytes with smoothing and not-sounding set: the standard's CRC
// example, whose bits 0 to 33 give c7..c0 = 10101000.
TEST(WlanHtVht, SigFieldsCarryTheirValuesAndCrc) {
  EXPECT_EQ(text(htSigBits(15, 1, 100, false)),
            "1111000" "1" "0010011000000000" "1110000000" "10101000" "000000");
  EXPECT_EQ(text(htSigBits(7, 0, 64, true)).substr(0, 34),
            "1110000" "0" "0000001000000000" "1110000100");
  VhtFrameParams p;  // the defaults: group 63, partial AID 275, MCS 8
  EXPECT_EQ(text(vhtSigABits(p, 2)).substr(0, 34),
            "00" "1" "0" "111111" "000" "110010001" "0" "1" "0" "0" "00" "0001" "0" "1");
  EXPECT_EQ(text(vhtSigABits(p, 2)).substr(42), "000000");
  // A2 bit 1 only with the short guard when N_SYM mod 10 is 9.
  const struct {
    bool shortGuard;
    long long symbols;
    char bit;
  } rows[] = {{true, 9, '1'}, {true, 19, '1'}, {true, 10, '0'}, {true, 8, '0'}, {false, 9, '0'}};
  for (const auto& row : rows) {
    p.shortGuard = row.shortGuard;
    EXPECT_EQ(text(vhtSigABits(p, row.symbols))[25], row.bit) << row.symbols;
  }
}

// L_LENGTH = ceiling((TXTIME - 20) / 4) x 3 - 3 with TXTIME from 36 us (HT) or 40 us (VHT) of
// preamble; SIG-B counts 4-byte words with its reserved ones.
TEST(WlanHtVht, SignallingAnnouncesTheLengths) {
  const struct {
    double preamble;
    long long symbols;
    bool shortGuard;
    uint32_t legacyLength;
  } rows[] = {{36, 3, false, 18}, {36, 3, true, 18},  {36, 10, true, 36},
              {36, 10, false, 39}, {40, 9, true, 36}, {40, 9, false, 39}};
  for (const auto& row : rows)
    EXPECT_EQ(spoofedLegacyLength(htTxTime(row.symbols, row.shortGuard, row.preamble)),
              row.legacyLength)
        << row.preamble << " " << row.symbols << " " << row.shortGuard;
  const long long bytes[] = {0, 1, 4, 5, 65535};
  const uint32_t sigB[] = {0xE0000, 0xE0001, 0xE0001, 0xE0002, 0xE4000};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(vhtSigBValue(bytes[i]), sigB[i]) << bytes[i];
}

// The first VHT data symbol at MCS 0, unscrambled and uninterleaved: SERVICE holds 8 zeros and
// the CRC of SIG-B over 20, 21 or 23 bits by bandwidth, c7 first.
TEST(WlanHtVht, VhtServiceCarriesTheSigBCrc) {
  const struct {
    int bytes;
    int bandwidth;
    const char* crc;
  } rows[] = {{1, 0, "11101000"}, {100, 0, "00110101"}, {1, 1, "11010001"}, {100, 2, "10111101"}};
  for (const auto& row : rows) {
    VhtFrameParams p;
    p.mcs = 0;
    p.bandwidth = row.bandwidth;
    p.scrambled = p.interleaved = false;
    p.windowLength = 0;
    p.data = psdu(row.bytes);
    const ComplexVector frame = buildVhtFrame(p);
    BitVector stream(26, 0);  // what the first symbol's 52 coded bits carry
    for (int i = 0; i < 8; ++i) stream[8 + i] = static_cast<uint8_t>(row.crc[i] - '0');
    for (size_t i = 0; i < 10 && i < p.data.size(); ++i) stream[16 + i] = p.data[i];  // then pad
    std::string bits;
    for (int k = -28; k <= 28; ++k)
      if (k != 0 && std::abs(k) != 7 && std::abs(k) != 21)
        bits += ofdmBin(frame, 800, k).real() > 0 ? '1' : '0';
    EXPECT_EQ(bits, text(ConvolutionalEncoder(0).encode(stream))) << row.bytes << row.bandwidth;
  }
}

// L-SIG and every HT-SIG and VHT-SIG-A symbol carry pilots of +1; only the first VHT-SIG-A symbol
// is unrotated BPSK; VHT-SIG-B has pilots 1, 1, 1, -1 on the HT subcarriers.
TEST(WlanHtVht, SigSymbolsAreRotatedAndPilotedAsTheyShouldBe) {
  VhtFrameParams p;
  p.windowLength = 0;
  p.data = psdu(64);
  const ComplexVector ht = buildHtFrame(p), vht = buildVhtFrame(p);
  const struct {
    const ComplexVector* frame;
    int start;
    bool rotated;
    float lastPilot;
  } rows[] = {{&ht, 320, false, 1},  {&ht, 400, true, 1},   {&ht, 480, true, 1},
              {&vht, 320, false, 1}, {&vht, 400, false, 1}, {&vht, 480, true, 1},
              {&vht, 720, false, -1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.start);
    const Sample data = ofdmBin(*row.frame, row.start, 1);
    EXPECT_NEAR(std::abs(row.rotated ? data.real() : data.imag()), 0.0f, 1e-4);
    EXPECT_NEAR(std::abs(data), 1.0f, 1e-4);
    for (int k : {-21, -7, 7}) EXPECT_NEAR(ofdmBin(*row.frame, row.start, k).real(), 1.0f, 1e-4);
    EXPECT_NEAR(ofdmBin(*row.frame, row.start, 21).real(), row.lastPilot, 1e-4);
  }
}

}  // namespace
