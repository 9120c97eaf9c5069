// SPDX-License-Identifier: MIT
// The OFDM waveform of a description: the filled grid, inverse FFT and cyclic prefix a symbol.
#include "wireless/ofdm/ofdm_generator.h"

#include "digital/bit_sources.h"
#include "digital/modulation_map.h"
#include "dsp/vec_fft.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using Grid = std::vector<std::vector<Sample>>;

// The part of a sorted list within first .. last.
std::pair<const int*, const int*> within(const std::vector<int>& sorted, long long first,
                                         long long last) {
  const int* begin = sorted.data();
  const int* end = begin + sorted.size();
  const int* from = std::lower_bound(begin, end, first, [](int v, long long x) { return v < x; });
  const int* to = std::upper_bound(from, end, last, [](long long x, int v) { return x < v; });
  return {from, to};
}

// Calls write(row, bin) for each symbol and subcarrier of `r` inside the grid, symbols outer,
// both ascending; whatever lies outside is skipped without a value being used up. The lists are
// cut to the grid first, so a range far wider than the grid costs nothing.
template <class Write>
void forEachCell(const OFDMResource& r, const OFDMConfig& config, Write write) {
  const int n = config.fftSize;
  const auto [s0, s1] = within(r.symbolRange.values, 1, config.symbolCount);
  const auto [c0, c1] = within(r.subcarrierIndices.values, -(n / 2), n - 1 - n / 2);
  for (const int* s = s0; s != s1; ++s)
    for (const int* c = c0; c != c1; ++c) write(*s - 1, n / 2 + *c);
}

// The cursor runs on across symbols and wraps at the list's end; an empty list writes zeros.
void placeIq(const OFDMResource& r, const OFDMConfig& config, Grid& grid) {
  size_t cursor = 0;
  forEachCell(r, config, [&](int row, int bin) {
    if (r.userIq.empty()) {
      grid[row][bin] = Sample(0.0f, 0.0f);
      return;
    }
    grid[row][bin] = r.userIq[cursor];
    if (++cursor == r.userIq.size()) cursor = 0;
  });
}

// A modulation without a table (FSK, custom) or bits that make no symbol leave the grid as it
// is: there is nothing to place.
void placeBits(const OFDMResource& r, const OFDMConfig& config, Grid& grid) {
  const ModulationMap map = defaultModulationMap(r.modulation);
  const int k = bitsPerSymbol(map);
  const std::vector<uint32_t> source = ofdmSymbolSource(r, k);
  if (map.states.empty() || source.empty()) return;
  size_t next = 0;
  forEachCell(r, config, [&](int row, int bin) {
    grid[row][bin] = map.states[source[next]];
    if (++next == source.size()) next = 0;
  });
}

void clearUnused(const OFDMConfig& config, std::vector<Sample>& row) {
  const int n = config.fftSize;
  const Sample zero(0.0f, 0.0f);
  if (config.nullDc) row[n / 2] = zero;
  for (int b = 0; b < n && b < config.guardCarriersLeft; ++b) row[b] = zero;
  for (int b = 0; b < n && b < config.guardCarriersRight; ++b) row[n - 1 - b] = zero;
}

int fftOrder(int n) {
  int order = 0;
  while ((1 << order) < n) ++order;
  return (1 << order) == n ? order : 0;
}

}  // namespace

std::vector<uint32_t> ofdmSymbolSource(const OFDMResource& resource, int bitsPerSymbol) {
  if (resource.bitSelect == ofdmCustomBits) {
    if (bitsPerSymbol < 1) return {};
    return symbolsFromBits(bitsFromText(resource.userBits), bitsPerSymbol);
  }
  const std::vector<uint8_t> bits = generatePnBits(resource.bitSelect, ofdmPnSeed);
  const size_t period = bits.size();
  std::vector<uint32_t> words(period, 0);
  // The window of each step, as a register shifted once a word would hold it.
  for (size_t i = 0; i < period; ++i)
    for (int j = 0; j < bitsPerSymbol; ++j)
      words[i] |= uint32_t{bits[(i + j) % period]} << j;
  return words;
}

Grid buildOfdmGrid(const OFDMConfig& config) {
  if (config.fftSize < 1 || config.symbolCount < 1) return {};
  if (int64_t{config.fftSize} * config.symbolCount > maxOfdmSamples) return {};
  Grid grid(config.symbolCount, std::vector<Sample>(config.fftSize, Sample(0.0f, 0.0f)));
  for (const OFDMResource& r : config.resources) {
    if (!r.enabled) continue;
    if (r.dataType == OFDMDataIq)
      placeIq(r, config, grid);
    else
      placeBits(r, config, grid);
  }
  for (std::vector<Sample>& row : grid) clearUnused(config, row);
  return grid;
}

std::vector<Sample> generateOfdm(const OFDMConfig& config) {
  const int n = config.fftSize;
  const double guard = std::trunc(n * config.guardInterval);  // NaN fails both tests below
  if (!(guard >= 0.0 && guard <= n)) return {};
  const int g = static_cast<int>(guard);
  const int64_t length = int64_t{config.symbolCount} * (int64_t{n} + g);
  if (length > maxOfdmSamples) return {};
  const Grid grid = buildOfdmGrid(config);
  if (grid.empty()) return {};

  VecStatePtr<VecFft> fft = vecFftCreate(fftOrder(n), VecFftDivBySqrtN, 0);
  if (!fft) return {};
  std::vector<Sample> out(static_cast<size_t>(length), Sample(0.0f, 0.0f));
  std::vector<Sample> bins(n);
  const int half = n / 2;
  for (size_t row = 0; row < grid.size(); ++row) {
    // Subcarrier order to FFT order: entries half .. n-1 become bins 0 .. n-half-1.
    std::copy(grid[row].begin() + half, grid[row].end(), bins.begin());
    std::copy(grid[row].begin(), grid[row].begin() + half, bins.begin() + (n - half));
    Sample* symbol = out.data() + row * (static_cast<size_t>(n) + g);
    vecFftInverse32fc(bins.data(), symbol + g, fft.get());
    std::copy(symbol + n, symbol + n + g, symbol);
  }
  return out;
}
