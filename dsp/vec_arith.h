// SPDX-License-Identifier: MIT
// Element-wise arithmetic and conversions over float, double and complex sample arrays.
#pragma once

#include "dsp/sample.h"

#include <cstdint>

// n counts elements (complex samples for 32fc); n < 1 returns VecErrSize and writes nothing.
// dst may be the same array as any source; partly overlapping arrays are not supported.

int vecAdd32fc(const Sample* a, const Sample* b, Sample* dst, int n);  // a + b
int vecMul32fc(const Sample* a, const Sample* b, Sample* dst, int n);  // a × b, complex
int vecAddC32fc(const Sample* src, float re, float im, Sample* dst, int n);
int vecMulC32fc(const Sample* src, float re, float im, Sample* dst, int n);
int vecMulC32fcInPlace(float re, float im, Sample* dst, int n);

int vecMulC32f(const float* src, float c, float* dst, int n);
int vecMulC32fInPlace(float c, float* dst, int n);
// With c == 0 it returns VecErrDivByZero and leaves dst as it was.
int vecDivC32f(const float* src, float c, float* dst, int n);
int vecMulC64f(const double* src, double c, double* dst, int n);

// Interleaves re and im into complex samples; a null re or im stands for zeros.
int vecRealToComplex(const float* re, const float* im, Sample* dst, int n);
int vecReal32fc(const Sample* src, float* dst, int n);
int vecImag32fc(const Sample* src, float* dst, int n);

int vecAndC32u(const uint32_t* src, uint32_t mask, uint32_t* dst, int n);

// dst(i) = src(i) × 2^-scale; the file readers pass 15 for full scale 1.0.
int vecConvert16sTo32f(const int16_t* src, float* dst, int n, int scale);
