// SPDX-License-Identifier: MIT
// Complex exponential generator with a phase carried from one call to the next.
#pragma once

#include "dsp/sample.h"

// dst(i) = magnitude × exp(j (phase + 2π relFreq i)) for i < n.
// relFreq in cycles per sample (any finite value; callers keep it in 0 to 1); *phase in
// radians on entry, and on return the phase of sample n wrapped to 0 <= phase < 2π, so that
// a following call continues the tone without a jump.
// hint VecHintAccurate computes in double and rounds on the store (error below 1 ulp of float);
// the other hints compute in float (error a few ulp). Both track the phase in double, so no
// error accumulates over long tones.
int vecTone32fc(Sample* dst, int n, float magnitude, float relFreq, float* phase, int hint);
