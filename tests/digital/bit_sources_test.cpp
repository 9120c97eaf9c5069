// SPDX-License-Identifier: MIT
// PN sequences of both registers and the bits of a user pattern.
#include "digital/bit_sources.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string asText(const std::vector<uint8_t>& bits) {
  std::string text;
  for (uint8_t bit : bits) text += static_cast<char>('0' + bit);
  return text;
}

// A full period of a maximal register: 2^(n-1) ones, and every bit is the sum of the two
// tapped bits before it, around the wrap as well (bit k of the register holds the output
// of k + 1 steps ago).
TEST(GeneratePnBits, TableOrdersGiveFullBalancedPeriods) {
  const struct {
    int order;
    int tapLow, tapHigh;
  } table[] = {{3, 1, 2},    {5, 2, 4},    {7, 5, 6},   {9, 4, 8},
               {15, 13, 14}, {21, 18, 20}, {23, 17, 22}};
  for (const auto& row : table) {
    const std::vector<uint8_t> bits = generatePnBits(row.order, 1);
    const size_t n = bits.size();
    ASSERT_EQ(n, (size_t{1} << row.order) - 1) << row.order;
    size_t ones = 0, broken = 0;
    for (size_t i = 0; i < n; ++i) {
      ones += bits[i];
      broken += bits[i] !=
                (bits[(i + 2 * n - 1 - row.tapLow) % n] ^ bits[(i + 2 * n - 1 - row.tapHigh) % n]);
    }
    EXPECT_EQ(ones, size_t{1} << (row.order - 1)) << row.order;
    EXPECT_EQ(broken, 0u) << row.order;
  }
}

TEST(GeneratePnBits, SeedsAndOtherOrders) {
  // Order 7, seed 23 (bits 0, 1, 2, 4): bit n = r5 ^ r6 of the register before the step,
  // 0^0, 1^0, 0^1, 1^0, 1^1, 1^1, then the outputs themselves come under the taps.
  const std::vector<uint8_t> pn7 = generatePnBits(7, 23);
  EXPECT_EQ(asText(pn7).substr(0, 12), "011100110010");
  EXPECT_EQ(generatePnBits(7, 23), pn7);
  // Order 4 takes the mask 0x60 and 15 bits: seed 1 reaches bit 5 after five steps.
  EXPECT_EQ(asText(generatePnBits(4, 1)), "000001100001010");
  EXPECT_EQ(asText(generatePnBits(9, 0)), std::string(511, '0'));
  for (int order : {-3, 0, maxPnOrder + 1, 32, 64}) EXPECT_TRUE(generatePnBits(order, 1).empty());
}

TEST(BitsFromText, KeepsZerosAndOnesOnly) {
  const std::vector<uint8_t> expected = {0, 1, 1, 0, 1};
  EXPECT_EQ(bitsFromText(QString::fromUtf8("0 1x\n1\u00e90\u0661-1")), expected);
  EXPECT_TRUE(bitsFromText("").empty());
}

TEST(PnTextFromEditor, LengthsAndBounds) {
  const struct {
    int order;
    uint32_t seed;
    int length, ones;
  } cases[] = {{9, 23, 511, 256}, {15, 23, 32767, 16384}, {23, 1, 8388607, 4194304},
               {15, 0, 1, 0},     {9, 0x40000000, 1, 0},  {7, 5, 1, 1}};
  for (const auto& c : cases) {
    const QString text = pnTextFromEditor(c.order, c.seed);
    EXPECT_EQ(text.size(), c.length) << c.order << " " << c.seed;
    EXPECT_EQ(text.count('1'), c.ones) << c.order << " " << c.seed;
  }
  // Order 9 taps bits 3 and 8, not generatePnBits' 4 and 8: from seed 23, n = y[n-4] ^ y[n-9]
  // with y[-1-k] the seed's bit k.
  EXPECT_TRUE(pnTextFromEditor(9, 23).startsWith("011111000"));
  // Bits above the register don't change the characters, and the loop ends.
  EXPECT_EQ(pnTextFromEditor(9, 23 | 0x400), pnTextFromEditor(9, 23));
  EXPECT_EQ(pnTextFromEditor(15, 0), "0");
}

}  // namespace
