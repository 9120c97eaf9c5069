// SPDX-License-Identifier: MIT
// Reductions of float and double arrays: sums and extremes.
#pragma once

// n < 1 returns VecErrSize and leaves the result as it was.

// hint VecHintAccurate: one double accumulator's precision (error about n × 1e-16 relative);
// otherwise pairwise summation in float (error about log2(n) × 6e-8 relative).
int vecSum32f(const float* src, int n, float* sum, int hint);
int vecSum64f(const double* src, int n, double* sum);

int vecMaxAbs32f(const float* src, int n, float* result);  // greatest |src(i)|
int vecMin32f(const float* src, int n, float* result);
int vecMax32f(const float* src, int n, float* result);
