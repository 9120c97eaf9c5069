// SPDX-License-Identifier: MIT
// Air bits of the Bluetooth LE tests: bytes in air order, and GFSK read back from its samples.
#pragma once

#include "dsp/sample.h"

#include <complex>
#include <cstdint>
#include <string>
#include <vector>

// Bytes in air order, each least significant bit first, as PDUs go on air.
inline std::vector<uint8_t> bitsOfHex(const std::string& hex) {
  std::vector<uint8_t> bits;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    const unsigned byte = std::stoul(hex.substr(i, 2), nullptr, 16);
    for (int k = 0; k < 8; ++k) bits.push_back((byte >> k) & 1);
  }
  return bits;
}

// Phase steps (radians) summed over each symbol, symbol k's centre at sample first + k x sps
// and its steps from sps / 2 - 1 before it to sps / 2 after: the sign gives the bit, the sum
// the phase a symbol turns. The phase starts at 0 before sample 0, as the builders integrate.
inline std::vector<double> symbolPhases(const std::vector<Sample>& y, size_t first, int sps,
                                        size_t symbols) {
  std::vector<double> phases(symbols, 0.0);
  std::complex<double> before(1.0, 0.0);
  for (size_t i = 0; i < y.size(); ++i) {
    const std::complex<double> now(y[i]);
    const size_t symbol = (i + sps / 2 - 1 - first) / sps;
    if (i + sps / 2 >= first + 1 && symbol < symbols)
      phases[symbol] += std::arg(now * std::conj(before));
    before = now;
  }
  return phases;
}

inline std::vector<uint8_t> bitsOf(const std::vector<double>& phases, size_t first, size_t count) {
  std::vector<uint8_t> bits;
  for (size_t i = first; i < first + count; ++i) bits.push_back(phases[i] > 0);
  return bits;
}
