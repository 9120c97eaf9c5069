// SPDX-License-Identifier: MIT
// Filtering of a periodic record: no transient at the wrap and the filter's delay removed.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_fir.h"

// In place, samples(i) becomes sum over k of taps(k) × samples((i + half - k) mod length),
// half = taps / 2: the record is treated as one period of an endless signal, so it still joins
// itself after filtering, and output i is centred on input i for odd tap counts. A record
// shorter than the filter is repeated until it is long enough and keeps its length.
// The filter's delay line is overwritten; its taps are used as they are.
// Returns VecErrSize for length < 1 and VecErrNull for null arguments, writing nothing.
int filterCircular(VecFir32fc* fir, Sample* samples, int length);
int filterCircular(VecFir32f* fir, float* samples, int length);
