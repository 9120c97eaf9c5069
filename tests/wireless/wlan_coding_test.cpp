// SPDX-License-Identifier: MIT
// Bit-exact checks of the WLAN coding chain against the IEEE 802.11a worked example.
#include "wireless/convolutional_encoder.h"
#include "wireless/rate_params.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_interleaver.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string text(const BitVector& bits) {
  std::string s;
  for (uint8_t b : bits) s += static_cast<char>('0' + b);
  return s;
}

// The worked example: a 100-byte PSDU at 36 Mb/s, scrambler initial state 1011101 (93).
BitVector exampleSignal() {
  const uint32_t rate = 13, length = 100;
  uint32_t value = rate | (length << 5);
  value |= static_cast<uint32_t>(__builtin_popcount(value) & 1) << 17;
  return signalFieldBits(value);
}

TEST(WlanCoding, StagesMatchTheStandardsWorkedExample) {
  const BitVector signal = exampleSignal();
  const BitVector coded = ConvolutionalEncoder(WlanRate1_2).encode(signal);
  struct Row {
    const char* stage;
    BitVector bits;
    const char* expected;
  } rows[] = {
      // The scrambler's whole period from the all-ones state.
      {"period from all ones", scrambleBits(0x7F, BitVector(127, 0)),
       "00001110" "11110010" "11001001" "00000010" "00100110" "00101110" "10110110" "00001100"
       "11010100" "11100111" "10110100" "00101010" "11111010" "01010001" "10111000" "1111111"},
      // The 16 SERVICE zeros scrambled from state 93.
      {"scrambled SERVICE", scrambleBits(93, BitVector(16, 0)), "0110110000011001"},
      {"SIGNAL", signal, "101100010011000000000000"},
      // An odd value without its parity gets bit 17 set.
      {"SIGNAL parity guard", signalFieldBits(1), "100000000000000001000000"},
      {"SIGNAL coded", coded, "110100011010000100000010001111100111000000000000"},
      {"SIGNAL interleaved", interleave48(coded, 1),
       "100101001101000000010100100000110010010010010100"},
  };
  for (const Row& row : rows) EXPECT_EQ(text(row.bits), row.expected) << row.stage;
  const float polarity[8] = {1, 1, 1, 1, -1, -1, -1, 1};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(pilotPolarity(i + 127), polarity[i]) << i;
}

TEST(WlanCoding, PuncturingKeepsThePatternsBitsAndPrecomputedLength) {
  BitVector input(61);
  for (size_t i = 0; i < input.size(); ++i) input[i] = static_cast<uint8_t>((i * 7 + i / 3) % 2);
  const BitVector mother = ConvolutionalEncoder(WlanRate1_2).encode(input);
  struct Row {
    int codeRate;
    const char* pattern;
    size_t length;  // 61 x 2 x ones / pattern length
  } rows[] = {{0, "11", 122}, {1, "1110", 91}, {2, "111001", 81}, {3, "1110011001", 73},
              {9, "11", 122}};
  for (const Row& row : rows) {
    const std::string pattern = row.pattern;
    EXPECT_EQ(puncturePattern(row.codeRate), pattern) << row.codeRate;
    BitVector kept;
    for (size_t i = 0; i < mother.size(); ++i)
      if (pattern[i % pattern.size()] == '1') kept.push_back(mother[i]);
    const BitVector out = ConvolutionalEncoder(row.codeRate).encode(input);
    ASSERT_EQ(out.size(), row.length) << row.codeRate;
    // The last partial cycle stops where the precomputed length ends.
    kept.resize(row.length);
    EXPECT_EQ(text(out), text(kept)) << row.codeRate;
  }
}

// The standard's deinterleaver, written from its receive-side formulas, must undo both steps.
TEST(WlanCoding, InterleaversAreUndoneByTheStandardsDeinterleaver) {
  struct Row {
    BitVector (*interleave)(const BitVector&, int);
    int subcarriers, columns;
  } kinds[] = {{interleave48, 48, 16}, {interleave52, 52, 13}};
  for (const Row& kind : kinds) {
    for (int bpsc : {1, 2, 4, 6, 8}) {
      const int n = kind.subcarriers * bpsc, s = std::max(bpsc / 2, 1);
      BitVector in(n);
      for (int i = 0; i < n; ++i) in[i] = static_cast<uint8_t>((i * 37 / 5 + i / 11) % 2);
      const BitVector out = kind.interleave(in, bpsc);
      ASSERT_EQ(out.size(), in.size());
      for (int j = 0; j < n; ++j) {
        const int i = s * (j / s) + (j + kind.columns * j / n) % s;
        const int k = kind.columns * i - (n - 1) * (kind.columns * i / n);
        ASSERT_EQ(out[j], in[k]) << kind.subcarriers << " x " << bpsc << " at " << j;
      }
    }
  }
}

}  // namespace
