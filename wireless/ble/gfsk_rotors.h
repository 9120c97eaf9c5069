// SPDX-License-Identifier: MIT
// Phase integration shared by the GFSK builders: per-sample rotors multiplied up in float.
#pragma once

#include "dsp/sample.h"

#include <cstdint>

// out(i) = z(0) z(1) ... z(i) with z(i) = cos(2 pi track(i)) + j sin(2 pi track(i)), track in
// cycles a sample, 2 pi and the products in float and nothing renormalised, so the rounding is
// part of the output. Returns the mean power of the n outputs in dB, summed in double.
double integrateFrequencyTrack(const float* track, int64_t n, Sample* out);
