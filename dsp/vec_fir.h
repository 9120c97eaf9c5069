// SPDX-License-Identifier: MIT
// Stateful single-rate FIR filters: real taps over real data, complex taps over complex data.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_alloc.h"

// How a filter computes; both forms give the same output within float rounding.
enum class VecFirMethod {
  Auto,    // direct for short filters and short calls, overlap-save FFT for long ones
  Direct,  // the convolution sum, vectorised
  Fft,     // overlap-save FFT convolution for every call
};

// y(t) = sum over k < length of taps(k) × x(t - k). The delay line holds the last length - 1
// inputs; it starts zeroed and carries over from one apply to the next, so one call over a
// buffer equals any split of it into consecutive calls.
struct VecFir32f : VecState {
  virtual int length() const = 0;
};
struct VecFir32fc : VecState {
  virtual int length() const = 0;
};

// Null for length < 1 or null taps. The taps are copied.
VecStatePtr<VecFir32f> vecFirCreate32f(const float* taps, int length,
                                       VecFirMethod method = VecFirMethod::Auto);
VecStatePtr<VecFir32fc> vecFirCreate32fc(const Sample* taps, int length,
                                         VecFirMethod method = VecFirMethod::Auto);

// Runs n samples through; src and dst may be the same array (not partly overlapping).
int vecFirApply32f(VecFir32f* fir, const float* src, float* dst, int n);
int vecFirApply32fc(VecFir32fc* fir, const Sample* src, Sample* dst, int n);
