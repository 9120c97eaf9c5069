// SPDX-License-Identifier: MIT
// Fills and copies of float, double and complex sample arrays.
#pragma once

#include "dsp/sample.h"

// n counts elements; a call with n < 1 returns VecErrSize and writes nothing.
// Copy requires disjoint arrays (src == dst is a no-op); Move allows any overlap.
int vecCopy32f(const float* src, float* dst, int n);
int vecCopy32fc(const Sample* src, Sample* dst, int n);
int vecMove32f(const float* src, float* dst, int n);
int vecMove32fc(const Sample* src, Sample* dst, int n);

int vecSet32f(float value, float* dst, int n);
int vecSet32fc(float re, float im, Sample* dst, int n);
int vecSet64f(double value, double* dst, int n);
int vecZero32f(float* dst, int n);
int vecZero32fc(Sample* dst, int n);
