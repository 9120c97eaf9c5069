// SPDX-License-Identifier: MIT
// Rate-1/2 K=7 convolutional encoder with the WLAN puncturing patterns.
#pragma once

#include "wireless/wlan_types.h"

#include <cstdint>
#include <string>

// The puncturing pattern of a `codeRate` index, walked two places per input bit: "11", "1110",
// "111001", "1110011001"; any other index keeps "11".
const std::string& puncturePattern(int codeRate);

// Generators 133 and 171 octal. The state starts at 0 and is never carried over: make one
// encoder per field.
class ConvolutionalEncoder {
public:
  explicit ConvolutionalEncoder(int codeRate);

  // Coded, punctured bits. The length is fixed up front as (n x 2 x ones) / pattern length;
  // a partial pattern cycle at the end simply stops there.
  BitVector encode(const BitVector& bits);

private:
  uint8_t firstOut[64][2];
  uint8_t secondOut[64][2];
  uint8_t nextState[64][2];
  std::string pattern;
  int state = 0;
};
