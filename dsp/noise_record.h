// SPDX-License-Identifier: MIT
// Seeded Gaussian noise filtered circularly, built on two threads: the noise of the AWGN mode
// and of the impairment chain.
#pragma once

#include "dsp/sample.h"

#include <cstdint>
#include <functional>
#include <vector>

// What to divide the record by, from its greatest magnitude and its sum of |x|^2 once filtered.
using NoiseDivisor = std::function<double(float peak, double sumOfSquares)>;

// Fills `length` samples with vecRandGauss32f's values for `seed` (I and Q interleaved, mean 0,
// `stdDev`), filters them circularly with `taps` (as filterCircular: output i centred on input
// i, the end joined to the start), and divides every value by divisorFor(peak, sum of squares)
// in float. An odd tap count, and at least as many samples as taps. A second thread fills the
// record a block ahead of the filter, so the two costs overlap.
void makeFilteredNoise(Sample* x, int64_t length, const std::vector<Sample>& taps, float stdDev,
                       unsigned int seed, const NoiseDivisor& divisorFor);
