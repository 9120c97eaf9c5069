// SPDX-License-Identifier: MIT
// Placement of data and pilots on the 64 subcarriers, and the pilot values of each symbol.
#include "wireless/subcarrier_placement.h"

#include "wireless/wlan_bits.h"

#include <array>
#include <cstdlib>

namespace {

constexpr int pilotK[4] = {-21, -7, 7, 21};

// Table indices of the data subcarriers from -edge to edge, skipping DC and the pilots.
template <int Count>
std::array<int, Count> dataIndices(int edge) {
  std::array<int, Count> at{};
  int n = 0;
  for (int k = -edge; k <= edge; ++k)
    if (k != 0 && std::abs(k) != 7 && std::abs(k) != 21) at[n++] = k + wlanDcIndex;
  return at;
}

const std::array<int, 48> kLegacyData = dataIndices<48>(26);
const std::array<int, 52> kHtData = dataIndices<52>(28);

template <size_t Count>
ComplexVector placeData(const std::array<int, Count>& at, const ComplexVector& data) {
  ComplexVector freq(wlanFftSize, Sample(0.0f, 0.0f));
  for (size_t i = 0; i < Count && i < data.size(); ++i) freq[at[i]] = data[i];
  return freq;
}

// The polarity sequence is the scrambler's output from the all-ones state, 0 -> +1, 1 -> -1.
std::array<float, 127> makePolarity() {
  const BitVector sequence = scrambleBits(0x7F, BitVector(127, 0));
  std::array<float, 127> p{};
  for (int i = 0; i < 127; ++i) p[i] = sequence[i] ? -1.0f : 1.0f;
  return p;
}

const std::array<float, 127> kPolarity = makePolarity();

}  // namespace

ComplexVector placeLegacySymbol(const ComplexVector& data, const float pilots[4]) {
  static const float sign[4] = {1.0f, 1.0f, 1.0f, -1.0f};
  ComplexVector freq = placeData(kLegacyData, data);
  for (int i = 0; i < 4; ++i) freq[pilotK[i] + wlanDcIndex] = Sample(sign[i] * pilots[i], 0.0f);
  return freq;
}

ComplexVector placeHtSymbol(const ComplexVector& data, const Sample pilots[4]) {
  ComplexVector freq = placeData(kHtData, data);
  for (int i = 0; i < 4; ++i) freq[pilotK[i] + wlanDcIndex] = pilots[i];
  return freq;
}

HtPilots htPilots(int symbolIndex) {
  static const float base[4] = {1.0f, 1.0f, 1.0f, -1.0f};
  const int start = ((symbolIndex % 4) + 4) % 4;
  HtPilots p;
  for (int i = 0; i < 4; ++i) p.value[i] = Sample(base[(start + i) % 4], 0.0f);
  return p;
}

float pilotPolarity(int index) {
  return kPolarity[((index % 127) + 127) % 127];
}
