// SPDX-License-Identifier: MIT
// Pulse-shaping designs of the modulated modes, and the tap spectrum of the filter editors.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_design.h"  // designLowpass, used by designRectangular and the noise filters

#include <vector>

// Every design writes n float taps to h (n >= 1, sps >= 1 samples a symbol), computing in
// double and rounding on the store. They keep no state and may run on the streaming thread.
// Arguments are not checked beyond what keeps the writes inside h: n < 1, sps < 1 or a null h
// writes nothing.

// Root raised cosine of roll-off beta (0 <= beta <= 1), centred on tap n / 2, taps summing
// to 1. n must be odd. With an even n, i = n / 2 would land at index n, one beyond the buffer:
// that last value is not written (and not summed), so the n taps lean one tap to the left.
void designRootRaisedCosine(float* h, int n, double beta, int sps);

// Raised cosine ("Nyquist") of roll-off beta, centred on tap (n - 1) / 2, taps summing to 1;
// the singular points of the denominator are stepped over by 1e-6. With an even n the loop
// covers n - 1 taps: the last tap is set to 0.
void designRaisedCosine(float* h, int n, double beta, int sps);

// GMSK frequency pulse: a Gaussian of g = n - sps + 1 samples and bandwidth-time product bt,
// convolved with sps ones, taps summing to 1. n < sps leaves zeros.
void designGaussian(float* h, int n, double bt, int sps);

// A rectangle of one symbol with softened edges: designLowpass of g = n - sps + 1 taps with
// cutoff (cycles per sample; 0.5 and above become 0.49), Hamming window, convolved with sps
// ones, taps summing to 1. n < sps leaves zeros.
void designRectangular(float* h, int n, double cutoff, int sps);

// Half a sine period over one symbol: h(i) = sin(pi i / sps) for i < min(n, sps), else 0.
// Not normalised: the caller scales it.
void designHalfSine(float* h, int n, int sps);

// Points of the editors' spectrum plot.
constexpr int tapSpectrumSize = 1024;

// Power spectrum of the taps in dB, tapSpectrumSize bins in FFT order (bin 0 is DC): the taps
// zero-padded to 1024 (taps beyond 1024 are cut off), a 1024-point complex FFT without
// scaling, then 10 log10(|X|^2 + 1e-7) in float. n < 1 or null taps give the spectrum of
// zeros (-70 dB everywhere).
std::vector<float> tapSpectrumDb(const Sample* taps, int n);
std::vector<float> tapSpectrumDb(const float* taps, int n);
