// SPDX-License-Identifier: MIT
// Circular shaping of values that stand `factor` samples apart, without the zeros between them.
#pragma once

#include <cstdint>

// The output filterCircular would give over the zero-stuffed record, at 1/factor of its work:
// x is the periodic record of n = valueCount × factor samples that holds values(p) at p × factor
// and zeros elsewhere, y(i) = sum over k of taps(k) × x((i + taps / 2 - k) mod n), so output i
// is centred on input i for odd tap counts; a record shorter than the filter acts as repeated.
// Writes dst(t × stride) = y((first + t) mod n) for t < count: any stretch of the output, from
// any start (a negative one too), so a rail can be delayed and a long record made in pieces
// that stay in cache. Sums in float.
// Returns VecErrSize for valueCount, factor, tapCount, count or stride below 1, VecErrNull for
// null arrays, writing nothing.
int interpolateCircular(const float* values, int64_t valueCount, int factor, const float* taps,
                        int tapCount, int64_t first, int64_t count, float* dst, int stride);
