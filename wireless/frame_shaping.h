// SPDX-License-Identifier: MIT
// Finishing of a built WLAN frame: blending of symbol joins and RMS level normalisation.
#pragma once

#include "wireless/wlan_types.h"

// Blends every 80-sample preamble slot join (L-STF and L-LTF count two slots each, and are
// blended inside too) and every data symbol join with a raised-cosine window of W samples:
// W odd is rounded up, W above 16 is 16, W below 1 returns the frame unchanged. Each join mixes
// the previous symbol continued one FFT period forward with the next one continued one period
// back; joins are done in order on the working copy, so a later one sees the earlier. The last
// W/2 samples fade out; the first are left as they are. Data symbols are 80 samples apart, or
// 72 with the short guard (for fftSize 64). A join that would reach outside the frame is left out.
ComplexVector smoothSymbolJoins(const ComplexVector& frame, int fftSize, int preambleSlots,
                                int dataSymbols, bool shortGuard, int windowLength);

// A copy scaled so that its RMS is `levelDb` dB (re 1.0). The mean is over the samples given,
// so idle zeros added afterwards do not count. An empty or all-zero frame is returned as is.
ComplexVector normaliseRms(const ComplexVector& frame, double levelDb);

// Appends the silence after a frame: truncate(idleSeconds / (1 / sampleRate)) zero samples, or
// none when that is not above 0 (or not a finite count).
void appendIdleSamples(ComplexVector& frame, double idleSeconds, double sampleRate);
