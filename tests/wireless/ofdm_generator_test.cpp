// SPDX-License-Identifier: MIT
// Custom OFDM: the default configurations' grids and lengths, and how resources fill the grid.
#include "digital/modulation_map.h"
#include "wireless/ofdm/ofdm_generator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

namespace {

using Grid = std::vector<std::vector<Sample>>;

Sample at(const Grid& grid, int symbol, int subcarrier) {
  return grid[symbol - 1][grid[0].size() / 2 + subcarrier];
}

bool isPoint(const std::vector<Sample>& states, Sample v) {
  for (const Sample& s : states)
    if (s == v) return true;
  return false;
}

// The body of each symbol against a direct inverse DFT of its row, subcarrier c at frequency
// c / N, scaled by 1/sqrt(N); the prefix repeats the body's end.
void expectSymbolsMatchGrid(const OFDMConfig& config, const std::vector<Sample>& out) {
  const Grid grid = buildOfdmGrid(config);
  const int n = config.fftSize, g = static_cast<int>(n * config.guardInterval);
  ASSERT_EQ(out.size(), size_t(config.symbolCount) * (n + g));
  for (int s = 0; s < config.symbolCount; ++s) {
    const Sample* symbol = out.data() + s * (n + g);
    for (int t = 0; t < n; ++t) {
      std::complex<double> sum = 0;
      for (int b = 0; b < n; ++b)
        sum += std::complex<double>(grid[s][b]) * std::polar(1.0, 2 * M_PI * (b - n / 2) * t / n);
      sum /= std::sqrt(double(n));
      ASSERT_NEAR(symbol[g + t].real(), sum.real(), 2e-5) << "symbol " << s << " t " << t;
      ASSERT_NEAR(symbol[g + t].imag(), sum.imag(), 2e-5) << "symbol " << s << " t " << t;
    }
    for (int t = 0; t < g; ++t) ASSERT_EQ(symbol[t], symbol[n + t]) << "symbol " << s;
  }
}

TEST(OfdmDefaults, DataOnlyConfigurationFillsQam16BetweenTheGuards) {
  const OFDMConfig config = defaultOfdmConfig(0);
  EXPECT_EQ(config.symbolCount, 16);
  const Grid grid = buildOfdmGrid(config);
  ASSERT_EQ(grid.size(), 16u);
  const std::vector<Sample> qam16 = defaultModulationMap(DigitalModQAM16).states;
  for (int s = 1; s <= 16; ++s)
    for (int c = -32; c < 32; ++c) {
      const bool data = c >= -26 && c <= 26 && c != 0;
      if (data)
        EXPECT_TRUE(isPoint(qam16, at(grid, s, c))) << s << " " << c;
      else
        EXPECT_EQ(at(grid, s, c), Sample(0, 0)) << s << " " << c;
    }
  // The PN15 words run on from symbol to symbol: row two doesn't restart the source.
  EXPECT_NE(grid[0], grid[1]);
  expectSymbolsMatchGrid(config, generateOfdm(config));
}

TEST(OfdmDefaults, FrameConfigurationLaysPreamblesSignalDataAndPilots) {
  const OFDMConfig config = defaultOfdmConfig(1);
  ASSERT_EQ(config.resources.size(), 6u);
  const Grid grid = buildOfdmGrid(config);
  const Sample j(0, 1), one(1, 0), z(0, 0);
  // Short preamble (symbols 1, 2) at every fourth subcarrier; long 1 (symbol 3) is L(k) x
  // (-j)^k and long 2 (symbol 4) L(k). The pilot list misses +21, so it keeps the preambles and
  // is empty beside SIGNAL and data, whose lists skip it; its 27 falls in the guard band.
  const struct {
    int symbol, subcarrier;
    Sample value;
  } cells[] = {{1, -24, {1, 1}}, {2, -20, {-1, -1}}, {1, 4, {-1, -1}}, {2, 24, {1, 1}},
               {1, 2, z},        {2, 21, z},         {4, -26, one},     {4, -24, -one},
               {4, 26, one},     {4, 21, one},       {3, -26, -one},    {3, -1, j},
               {3, 1, -j},       {3, 2, one},        {3, 3, -j},        {3, 21, -j},
               {5, 21, z},       {24, 21, z},        {5, 27, z},        {24, 0, z},
               {9, -27, z}};
  for (const auto& c : cells)
    EXPECT_EQ(at(grid, c.symbol, c.subcarrier), c.value) << c.symbol << " " << c.subcarrier;
  // "Pilots" overlay the preambles at -21, -7 and 7 with BPSK; SIGNAL is BPSK, data QAM16.
  const std::vector<Sample> bpsk = defaultModulationMap(DigitalModBPSK).states;
  for (int s : {1, 3, 4, 24})
    for (int c : {-21, -7, 7}) EXPECT_TRUE(isPoint(bpsk, at(grid, s, c))) << s << " " << c;
  EXPECT_TRUE(isPoint(bpsk, at(grid, 5, 1)));
  EXPECT_TRUE(isPoint(defaultModulationMap(DigitalModQAM16).states, at(grid, 6, 1)));
  expectSymbolsMatchGrid(config, generateOfdm(config));
  EXPECT_EQ(generateOfdm(config).size(), 24u * 80u);
}

OFDMConfig smallGrid() {
  OFDMConfig c;
  c.fftSize = 8;
  c.symbolCount = 2;
  c.guardCarriersLeft = c.guardCarriersRight = 0;
  c.nullDc = false;
  return c;
}

OFDMResource iqResource(const char* symbols, const char* carriers, std::vector<Sample> iq) {
  OFDMResource r;
  r.enabled = true;
  r.dataType = OFDMDataIq;
  r.symbolRange.setText(symbols);
  r.subcarrierIndices.setText(carriers);
  r.userIq = std::move(iq);
  return r;
}

// Rows of the grid after the resources are laid in list order.
struct GridCase {
  const char* what;
  std::vector<OFDMResource> resources;
  Grid expected;
};

TEST(OfdmGenerator, ResourcesFillTheGridInListOrder) {
  const Sample a(1, 2), b(3, 4), c(5, 6), z(0, 0);
  OFDMResource off = iqResource("1:2", "-4:3", {c});
  off.enabled = false;
  OFDMResource qpsk;
  qpsk.enabled = true;
  qpsk.modulation = DigitalModQPSK;
  qpsk.bitSelect = ofdmCustomBits;
  qpsk.userBits = "10 0";  // one symbol: 1 first and lowest; the odd bit is dropped
  qpsk.symbolRange.setText("2");
  qpsk.subcarrierIndices.setText("3");
  OFDMResource fsk = qpsk;
  fsk.modulation = DigitalMod2FSK;  // no table: nothing placed
  const float h = defaultModulationMap(DigitalModQPSK).states[1].imag();
  const GridCase cases[] = {
      {"cursor wraps and runs on across symbols; outside the grid uses up nothing",
       {iqResource("0:3", "-5,-4,3,4", {a, b, c})},
       {{a, z, z, z, z, z, z, b}, {c, z, z, z, z, z, z, a}}},
      {"a disabled resource contributes nothing",
       {iqResource("1", "0", {a}), off},
       {{z, z, z, z, a, z, z, z}, {z, z, z, z, z, z, z, z}}},
      {"an empty list writes zeros over what came before",
       {iqResource("1:2", "-1:0", {a}), iqResource("2", "-1", {})},
       {{z, z, z, a, a, z, z, z}, {z, z, z, z, a, z, z, z}}},
      {"custom bits take k bits a symbol, first lowest",
       {qpsk},
       {{z, z, z, z, z, z, z, z}, {z, z, z, z, z, z, z, Sample(-h, h)}}},
      {"ranges far wider than the grid cost only the grid",
       {iqResource("-500000:500000", "-500000:500000", {a})},
       {std::vector<Sample>(8, a), std::vector<Sample>(8, a)}},
      {"a modulation without a table places nothing",
       {iqResource("2", "3", {a}), fsk},
       {{z, z, z, z, z, z, z, z}, {z, z, z, z, z, z, z, a}}},
  };
  for (const GridCase& t : cases) {
    OFDMConfig config = smallGrid();
    config.resources = t.resources;
    EXPECT_EQ(buildOfdmGrid(config), t.expected) << t.what;
  }
}

TEST(OfdmGenerator, DcAndGuardBandsAreZeroedAfterTheResources) {
  OFDMConfig config = smallGrid();
  config.resources = {iqResource("1", "-4:3", {Sample(1, 0)})};
  config.nullDc = true;
  config.guardCarriersLeft = 2;
  config.guardCarriersRight = 1;
  const Sample o(1, 0), z(0, 0);
  EXPECT_EQ(buildOfdmGrid(config)[0], (std::vector<Sample>{z, z, o, o, z, o, o, z}));
}

// Lengths, and the configurations a file can bring that no grid can be made of.
TEST(OfdmGenerator, LengthIsSymbolsTimesBodyAndPrefix) {
  struct Case {
    int fftSize, symbols;
    double guard;
    size_t length;
  };
  const Case cases[] = {
      {64, 16, 0.25, 16 * 80}, {64, 3, 0.0, 3 * 64}, {128, 2, 0.1, 2 * (128 + 12)},
      {8, 2, 1.0, 2 * 16},     {0, 4, 0.25, 0},      {-64, 4, 0.25, 0},
      {64, 0, 0.25, 0},        {64, -1, 0.25, 0},    {64, 4, -0.25, 0},
      {64, 4, 1.5, 0},         {64, 4, NAN, 0},      {1 << 20, 1 << 10, 0.25, 0},
  };
  for (const Case& t : cases) {
    OFDMConfig config = defaultOfdmConfig(0);
    config.fftSize = t.fftSize;
    config.symbolCount = t.symbols;
    config.guardInterval = t.guard;
    EXPECT_EQ(generateOfdm(config).size(), t.length) << t.fftSize << " " << t.symbols << " " << t.guard;
  }
}

// A size that is no power of two gets an FFT of order 0: only its first FFT-order bin
// (subcarrier 0 after the halves swap) passes, the rest of the body stays 0.
TEST(OfdmGenerator, SizeThatIsNoPowerOfTwoTransformsOneBin) {
  OFDMConfig config = smallGrid();
  config.fftSize = 6;
  config.symbolCount = 1;
  config.guardInterval = 0.5;
  config.resources = {iqResource("1", "-3:2", {Sample(1, 0), Sample(2, 0), Sample(3, 0),
                                                   Sample(4, 0), Sample(5, 0), Sample(6, 0)})};
  const Sample z(0, 0);
  EXPECT_EQ(generateOfdm(config), (std::vector<Sample>{z, z, z, Sample(4, 0), z, z, z, z, z}));
}

}  // namespace
