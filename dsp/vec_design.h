// SPDX-License-Identifier: MIT
// Windowed-sinc low-pass design and linear convolution in double precision.
#pragma once

// Window numbers; 1 and 2 are the ones the filter designs store and pass on.
enum VecWindow : int {
  VecWindowRectangular = 0,
  VecWindowBlackman = 1,
  VecWindowHamming = 2,
  VecWindowHann = 3,
  VecWindowKaiser = 4,  // shape set by kaiserBeta
};

// Low-pass FIR of `length` taps (>= 1) centred on (length - 1) / 2: ideal sinc of cutoff
// relCutoff in cycles per sample, 0 < relCutoff < 0.5, times the symmetric window.
// normalise: taps scaled to sum 1 (unit gain at DC); otherwise the sinc keeps its own height
// 2 × relCutoff at the centre. Returns VecErrRange for a cutoff or window outside the ranges.
int vecDesignLowpass(double relCutoff, double* taps, int length, int window, bool normalise,
                     double kaiserBeta = 8.0);

// dst(k) = sum of a(i) b(k - i): lengthA + lengthB - 1 values; dst must not overlap a or b.
int vecConvolve64f(const double* a, int lengthA, const double* b, int lengthB, double* dst);

// The low-pass taps that the noise filters and the pulse-shaping designs store: the window
// design above (window 1 Blackman, 2 Hamming) computed in double and rounded to float on the
// store. A cutoff of 0.5 or above is taken as the float 0.49. A cutoff the design refuses
// (0 or below, NaN) or a window outside the list leaves zeros.
void designLowpass(float* h, int n, double cutoff, int window, bool normalize);
