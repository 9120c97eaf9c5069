// SPDX-License-Identifier: MIT
// The 64-point inverse FFT of a WLAN frame build, guard intervals and symbol assembly.
#pragma once

#include "dsp/vec_fft.h"
#include "wireless/wlan_types.h"

// One FFT plan for a whole frame: make one object per build and pass it to every symbol, so
// the planner is visited once rather than once a symbol. Use from one thread at a time.
class WlanFft {
public:
  WlanFft();

  // False only if FFTW could not plan; inverseFft64 then writes zeros.
  bool valid() const { return fft != nullptr; }

  // 64 frequency entries in subcarrier order (k + 32) to 64 time samples, inverse divided by 64.
  // The halves are swapped into FFT order here. freq and time may be the same array.
  void inverseFft64(const Sample* freq, Sample* time);

private:
  VecStatePtr<VecFft> fft;
  VecArray<Sample> bins;
};

// The last n/4 samples of `time`, then all n.
ComplexVector addCyclicPrefix(const ComplexVector& time);

// Appends the last `guard` samples of time[0 .. n), then all n, to `frame`.
void appendWithGuard(ComplexVector& frame, const Sample* time, int n, int guard);

// One OFDM symbol from a 64-entry frequency vector: inverse FFT, guard of 16 samples, or 8
// with the short guard, appended to `frame`.
void appendSymbol(ComplexVector& frame, const ComplexVector& freq, WlanFft& fft, bool shortGuard);
