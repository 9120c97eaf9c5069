// SPDX-License-Identifier: MIT
// The built-in maps with their exact constants, bits a symbol, scaling and symbols of a source.
#include "digital/bit_sources.h"
#include "digital/modulation_map.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>

namespace {

uint32_t bitsOf(float x) {
  uint32_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

TEST(ModulationMap, BuiltInMapsAndTheirBitsASymbol) {
  struct Row {
    int mod;
    size_t states;
    int bits;
    std::vector<int32_t> offsets;
    bool offsetQ;
  };
  const Row rows[] = {
      {DigitalModBPSK, 2, 1, {}, false},
      {DigitalModDBPSK, 2, 1, {0, 1}, false},
      {DigitalModQPSK, 4, 2, {}, false},
      {DigitalModDQPSK, 4, 2, {0, 1, -1, 2}, false},
      {DigitalModOQPSK, 4, 2, {}, true},
      {DigitalModPi4DQPSK, 8, 2, {1, 3, -1, -3}, false},
      {DigitalMod8PSK, 8, 3, {}, false},
      {DigitalModD8PSK, 8, 3, {0, 1, 3, 2, -1, -2, 4, -3}, false},
      {DigitalMod16PSK, 16, 4, {}, false},
      {DigitalModQAM16, 16, 4, {}, false},
      {DigitalModQAM64, 64, 6, {}, false},
      {DigitalModQAM256, 256, 8, {}, false},
      {DigitalModQAM1024, 1024, 10, {}, false},
      {DigitalModQAM4096, 4096, 12, {}, false},
      {DigitalMod2ASK, 2, 1, {}, false},
      {DigitalMod2FSK, 0, 0, {}, false},
      {DigitalModCustom, 0, 0, {}, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.mod);
    const ModulationMap map = defaultModulationMap(row.mod);
    EXPECT_EQ(map.states.size(), row.states);
    EXPECT_EQ(bitsPerSymbol(map), row.bits);
    EXPECT_EQ(map.differential, !row.offsets.empty());
    EXPECT_EQ(map.diffStates, row.offsets);
    EXPECT_EQ(map.offsetQ, row.offsetQ);
  }
  // Exact constants: 1 / sqrt(2) as 0x3F3504F3, 0.707 as 0x3F34FDF4, the QAM steps from the
  // corner (c, c), bit 0 of a QPSK symbol on I.
  EXPECT_EQ(bitsOf(defaultModulationMap(DigitalModQPSK).states[1].real()), bitsOf(-0.70710677f));
  EXPECT_EQ(defaultModulationMap(DigitalModQPSK).states[1].imag(), 0.70710677f);
  EXPECT_EQ(bitsOf(defaultModulationMap(DigitalMod2ASK).states[1].real()), 0x3F34FDF4u);
  EXPECT_EQ(
      defaultModulationMap(DigitalModQAM16).states[6],
      Sample(float(0.7071067811865475 - 0.47140452f), float(0.7071067811865475 - 2 * 0.47140452f)));
  EXPECT_EQ(defaultModulationMap(DigitalModDQPSK).states[2], Sample(-0.70710677f, -0.70710677f));
  EXPECT_EQ(defaultModulationMap(DigitalMod16PSK).states[3],
            Sample(float(std::cos(3 * M_PI / 8)), float(std::sin(3 * M_PI / 8))));

  // A count that is no power of two (only a preset can bring one) gives no bits at all.
  EXPECT_EQ(bitsPerSymbol({{{1, 0}, {0, 1}, {-1, 0}}}), 0);
  EXPECT_EQ(bitsPerSymbol({{{1, 0}, {-1, 0}}, true, {0, 1, 2}}), 0);
}

TEST(ModulationMap, ScalingSetsTheRms) {
  std::vector<Sample> ask = defaultModulationMap(DigitalMod2ASK).states;
  normalizeConstellation(ask, 1.0f);
  EXPECT_NEAR(ask[1].real(), std::sqrt(2.0), 1e-6);
  std::vector<Sample> qam = defaultModulationMap(DigitalModQAM64).states;
  normalizeConstellation(qam, 0.25f);
  double power = 0.0;
  for (const Sample& p : qam) power += std::norm(std::complex<double>(p));
  EXPECT_NEAR(std::sqrt(power / qam.size()), 0.25, 1e-6);
}

// Bits taken the symbol's bits a symbol at a time, the first in the least significant place.
TEST(ModulationMap, SymbolsOfABitSource) {
  EXPECT_EQ(symbolsFromBits(bitsFromText("101"), 2), std::vector<uint32_t>{1});
  EXPECT_EQ(symbolsFromBits(bitsFromText("0111"), 2), (std::vector<uint32_t>{2, 3}));
  EXPECT_TRUE(symbolsFromBits(bitsFromText("0101"), 0).empty());
  // PN7 appended twice for 2 bits a symbol: 127 symbols, the 64th pairing the last bit of the
  // first pass with the first bit of the second.
  const std::vector<uint8_t> pn = generatePnBits(7, 23);
  std::vector<uint8_t> twice = pn;
  twice.insert(twice.end(), pn.begin(), pn.end());
  const std::vector<uint32_t> symbols = symbolsFromBits(twice, 2);
  ASSERT_EQ(symbols.size(), 127u);
  EXPECT_EQ(symbols[63], static_cast<uint32_t>(pn[126] | pn[0] << 1));
}

}  // namespace
