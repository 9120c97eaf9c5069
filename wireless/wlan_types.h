// SPDX-License-Identifier: MIT
// The two vector forms every WLAN building block takes and returns.
#pragma once

#include "dsp/sample.h"

#include <cstdint>
#include <vector>

// One byte a bit, each 0 or 1; element 0 is the first bit on air. The same form as the bit
// sources give, so PSDU bits pass straight in.
using BitVector = std::vector<uint8_t>;

// Frames and symbols, grown symbol by symbol. Only the FFT cares about alignment, and it passes
// arrays whose alignment differs from its plan's through its own aligned buffer.
using ComplexVector = std::vector<Sample>;
