// SPDX-License-Identifier: MIT
// Plain loops that define what the optimised kernels compute; tests and benchmarks use them.
#pragma once

#include "dsp/sample.h"

namespace vecref {

// In-order sum with one double accumulator.
double sum32f(const float* src, int n);
// Each sample from its own double-precision sin and cos of phase + 2π relFreq i.
void tone32fc(Sample* dst, int n, float magnitude, float relFreq, float phase);
// Direct convolution sum from a zeroed delay line, accumulated in double.
void fir32f(const float* taps, int length, const float* src, float* dst, int n);
void fir32fc(const Sample* taps, int length, const Sample* src, Sample* dst, int n);
// Element-wise sum of two complex arrays, one sample at a time.
void add32fc(const Sample* a, const Sample* b, Sample* dst, int n);

}  // namespace vecref
