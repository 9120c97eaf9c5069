// SPDX-License-Identifier: MIT
// Linear modulations: the built-in constellation maps, their bits a symbol, and the symbols of
// a bit source.
#include "digital/modulation_map.h"

#include <cmath>
#include <complex>

namespace {

constexpr double kPi = 3.14159265358979323846;
// 0x3F3504F3, the float nearest 1 / sqrt(2).
constexpr float a = 0.70710677f;

// Point k at the angle k pi / (count / 2), computed in double.
std::vector<Sample> phaseCircle(int count) {
  std::vector<Sample> points;
  for (int k = 0; k < count; ++k) {
    const double angle = k * kPi / (count / 2);
    points.emplace_back(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)));
  }
  return points;
}

// n x n points from the corner (c, c) in steps of d: point i x n + q is (c - i d, c - q d).
std::vector<Sample> squareQam(int n, float d) {
  constexpr double c = 0.7071067811865475;
  std::vector<Sample> points;
  for (int i = 0; i < n; ++i)
    for (int q = 0; q < n; ++q)
      points.emplace_back(static_cast<float>(c - i * static_cast<double>(d)),
                          static_cast<float>(c - q * static_cast<double>(d)));
  return points;
}

ModulationMap differential(std::vector<Sample> states, std::vector<int32_t> offsets) {
  return {std::move(states), true, std::move(offsets), false};
}

}  // namespace

const char* digitalModText(int mod) {
  static const char* const texts[] = {"BPSK",     "DBPSK",  "QPSK",    "DQPSK", "OQPSK",
                                      "Pi4DQPSK", "8PSK",   "D8PSK",   "16PSK", "QAM16",
                                      "QAM64",    "QAM256", "QAM1024", nullptr, "2ASK",
                                      "2FSK",     "4FSK",   "8FSK",    "16FSK", "Custom"};
  return mod >= 0 && mod <= DigitalModCustom ? texts[mod] : nullptr;
}

ModulationMap defaultModulationMap(int mod) {
  switch (mod) {
    case DigitalModBPSK: return {{{1, 0}, {-1, 0}}};
    case DigitalModDBPSK: return differential({{1, 0}, {-1, 0}}, {0, 1});
    // Symbol bit 0 sets the sign of I, bit 1 the sign of Q.
    case DigitalModQPSK: return {{{a, a}, {-a, a}, {a, -a}, {-a, -a}}};
    // In order round the circle.
    case DigitalModDQPSK: return differential({{a, a}, {-a, a}, {-a, -a}, {a, -a}}, {0, 1, -1, 2});
    case DigitalModOQPSK: return {{{a, a}, {-a, a}, {-a, -a}, {a, -a}}, false, {}, true};
    case DigitalModPi4DQPSK: return differential(phaseCircle(8), {1, 3, -1, -3});
    case DigitalMod8PSK: return {phaseCircle(8)};
    case DigitalModD8PSK: return differential(phaseCircle(8), {0, 1, 3, 2, -1, -2, 4, -3});
    case DigitalMod16PSK: return {phaseCircle(16)};
    case DigitalModQAM16: return {squareQam(4, 0.47140452f)};
    case DigitalModQAM64: return {squareQam(8, 0.20203051f)};
    case DigitalModQAM256: return {squareQam(16, 0.094280906f)};
    case DigitalModQAM1024: return {squareQam(32, 0.045619793f)};
    case DigitalModQAM4096: return {squareQam(64, 0.022447834f)};
    // 0x3F34FDF4: 0.707, not 1 / sqrt(2).
    case DigitalMod2ASK: return {{{0, 0}, {0.707f, 0}}};
    default: return {};
  }
}

int bitsPerSymbol(const ModulationMap& map) {
  const size_t count = map.differential ? map.diffStates.size() : map.states.size();
  if (count < 2 || (count & (count - 1)) != 0) return 0;
  int bits = 0;
  while ((size_t{1} << bits) < count) ++bits;
  return bits;
}

void normalizeConstellation(std::vector<Sample>& points, float iqScaling) {
  if (points.empty()) return;
  double power = 0.0;
  for (const Sample& p : points) power += std::norm(std::complex<double>(p));
  power /= static_cast<double>(points.size());
  if (!(power > 0.0)) return;
  const float scale = static_cast<float>(iqScaling / std::sqrt(power));
  for (Sample& p : points) p *= scale;
}

std::vector<uint32_t> symbolsFromBits(const std::vector<uint8_t>& bits, int bitsPerSymbol) {
  if (bitsPerSymbol < 1 || bitsPerSymbol > 31) return {};
  std::vector<uint32_t> symbols(bits.size() / static_cast<size_t>(bitsPerSymbol));
  for (size_t s = 0; s < symbols.size(); ++s)
    for (int b = 0; b < bitsPerSymbol; ++b)
      symbols[s] |= static_cast<uint32_t>(bits[s * bitsPerSymbol + b] & 1) << b;
  return symbols;
}
