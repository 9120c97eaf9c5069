// SPDX-License-Identifier: MIT
// Complex FFT objects of 2^order points over FFTW single precision.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_alloc.h"

// Scaling of the transforms; without a flag neither direction is scaled.
enum VecFftFlag : int {
  VecFftNoScale = 0,
  VecFftDivInvByN = 1,   // the inverse is divided by N: inverse(forward(x)) == x
  VecFftDivFwdByN = 2,   // the forward is divided by N
  VecFftDivBySqrtN = 4,  // both are divided by sqrt(N): unitary
};

// An FFT object owns its plans and a work buffer; use one object from one thread at a time.
struct VecFft : VecState {
  virtual int order() const = 0;
  int size() const { return 1 << order(); }
};

// order 0 to 27; flags one of VecFftFlag; the hint is accepted for all values and has no
// effect (the transforms are FFTW's single precision ones). Null for an order out of range,
// unknown flags, or when FFTW cannot plan.
VecStatePtr<VecFft> vecFftCreate(int order, int flags, int hint);

// X(k) = sum of x(t) exp(-2πj k t / N), and the inverse with exp(+2πj k t / N), each scaled as
// the flags say. src and dst hold size() samples; they may be the same array, and need no
// particular alignment.
int vecFftForward32fc(const Sample* src, Sample* dst, VecFft* fft);
int vecFftInverse32fc(const Sample* src, Sample* dst, VecFft* fft);
