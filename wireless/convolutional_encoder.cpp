// SPDX-License-Identifier: MIT
// Rate-1/2 K=7 convolutional encoder with the WLAN puncturing patterns.
#include "wireless/convolutional_encoder.h"

#include <algorithm>

namespace {

// 133 and 171 octal with the newest bit in bit 0 instead of bit 6.
constexpr unsigned firstTaps = 109;
constexpr unsigned secondTaps = 79;

}  // namespace

const std::string& puncturePattern(int codeRate) {
  static const std::string patterns[] = {"11", "1110", "111001", "1110011001"};
  return patterns[codeRate >= 0 && codeRate < 4 ? codeRate : 0];
}

ConvolutionalEncoder::ConvolutionalEncoder(int codeRate) : pattern(puncturePattern(codeRate)) {
  for (unsigned s = 0; s < 64; ++s) {
    for (unsigned in = 0; in < 2; ++in) {
      const unsigned v = (s << 1) | in;
      firstOut[s][in] = static_cast<uint8_t>(__builtin_parity(v & firstTaps));
      secondOut[s][in] = static_cast<uint8_t>(__builtin_parity(v & secondTaps));
      nextState[s][in] = static_cast<uint8_t>(v & 63);
    }
  }
}

BitVector ConvolutionalEncoder::encode(const BitVector& bits) {
  const long long ones = std::count(pattern.begin(), pattern.end(), '1');
  const long long length =
      static_cast<long long>(bits.size()) * 2 * ones / static_cast<long long>(pattern.size());
  BitVector out(static_cast<size_t>(length), 0);
  size_t written = 0;
  size_t place = 0;
  for (uint8_t bit : bits) {
    const unsigned in = bit & 1u;
    if (pattern[place] == '1' && written < out.size()) out[written++] = firstOut[state][in];
    if (pattern[place + 1] == '1' && written < out.size()) out[written++] = secondOut[state][in];
    state = nextState[state][in];
    place = (place + 2) % pattern.size();
  }
  return out;
}
