// SPDX-License-Identifier: MIT
// The two vector forms every WLAN building block takes and returns.
#pragma once

#include "dsp/sample.h"

#include <cstdint>
#include <vector>

// One byte a bit, each 0 or 1; element 0 is the first bit on air. The same form as the bit
// sources give, so PSDU bits pass straight in.
using BitVector = std::vector<uint8_t>;

// Frames and symbols. std::vector's storage is 16-byte aligned on our platforms, which is all
// FFTW's single-precision SIMD needs; the FFT object copies anything else through its own buffer.
using ComplexVector = std::vector<Sample>;
