// SPDX-License-Identifier: MIT
// Element-wise arithmetic and conversions over float, double and complex sample arrays.
#include "dsp/vec_arith.h"

#include "dsp/vec_status.h"

#include <cmath>

// The loops index plain arrays so that the compiler vectorises them; a complex array is
// walked as its 2 n floats wherever the operation allows.

namespace {

int check(const void* a, const void* b, const void* c, int n) {
  if (n < 1) return VecErrSize;
  if (!a || !b || !c) return VecErrNull;
  return VecOk;
}

const float* floats(const Sample* p) { return reinterpret_cast<const float*>(p); }
float* floats(Sample* p) { return reinterpret_cast<float*>(p); }

template <class T>
void mulC(const T* s, T c, T* d, int n) {
  for (int i = 0; i < n; ++i) d[i] = s[i] * c;
}

void mulC32fc(const float* s, float re, float im, float* d, int n) {
  for (int i = 0; i < n; ++i) {
    const float sr = s[2 * i], si = s[2 * i + 1];
    d[2 * i] = sr * re - si * im;
    d[2 * i + 1] = sr * im + si * re;
  }
}

}  // namespace

int vecAdd32fc(const Sample* a, const Sample* b, Sample* dst, int n) {
  if (int status = check(a, b, dst, n)) return status;
  const float* x = floats(a);
  const float* y = floats(b);
  float* d = floats(dst);
  for (int i = 0; i < 2 * n; ++i) d[i] = x[i] + y[i];
  return VecOk;
}

int vecMul32fc(const Sample* a, const Sample* b, Sample* dst, int n) {
  if (int status = check(a, b, dst, n)) return status;
  const float* x = floats(a);
  const float* y = floats(b);
  float* d = floats(dst);
  for (int i = 0; i < n; ++i) {
    const float xr = x[2 * i], xi = x[2 * i + 1], yr = y[2 * i], yi = y[2 * i + 1];
    d[2 * i] = xr * yr - xi * yi;
    d[2 * i + 1] = xr * yi + xi * yr;
  }
  return VecOk;
}

int vecAddC32fc(const Sample* src, float re, float im, Sample* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  const float* s = floats(src);
  float* d = floats(dst);
  for (int i = 0; i < n; ++i) {
    d[2 * i] = s[2 * i] + re;
    d[2 * i + 1] = s[2 * i + 1] + im;
  }
  return VecOk;
}

int vecMulC32fc(const Sample* src, float re, float im, Sample* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  mulC32fc(floats(src), re, im, floats(dst), n);
  return VecOk;
}

int vecMulC32fcInPlace(float re, float im, Sample* dst, int n) {
  return vecMulC32fc(dst, re, im, dst, n);
}

int vecMulC32f(const float* src, float c, float* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  mulC(src, c, dst, n);
  return VecOk;
}

int vecMulC32fInPlace(float c, float* dst, int n) { return vecMulC32f(dst, c, dst, n); }

int vecDivC32f(const float* src, float c, float* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  if (c == 0.0f) return VecErrDivByZero;
  for (int i = 0; i < n; ++i) dst[i] = src[i] / c;
  return VecOk;
}

int vecMulC64f(const double* src, double c, double* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  mulC(src, c, dst, n);
  return VecOk;
}

int vecRealToComplex(const float* re, const float* im, Sample* dst, int n) {
  if (int status = check(dst, dst, dst, n)) return status;
  if (!re && !im) return VecErrNull;
  float* d = floats(dst);
  if (re && im) {
    for (int i = 0; i < n; ++i) {
      d[2 * i] = re[i];
      d[2 * i + 1] = im[i];
    }
  } else {
    const float* part = re ? re : im;
    const int at = re ? 0 : 1;
    for (int i = 0; i < n; ++i) {
      d[2 * i + at] = part[i];
      d[2 * i + 1 - at] = 0.0f;
    }
  }
  return VecOk;
}

int vecReal32fc(const Sample* src, float* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  const float* s = floats(src);
  for (int i = 0; i < n; ++i) dst[i] = s[2 * i];
  return VecOk;
}

int vecImag32fc(const Sample* src, float* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  const float* s = floats(src);
  for (int i = 0; i < n; ++i) dst[i] = s[2 * i + 1];
  return VecOk;
}

int vecAndC32u(const uint32_t* src, uint32_t mask, uint32_t* dst, int n) {
  if (int status = check(src, dst, dst, n)) return status;
  for (int i = 0; i < n; ++i) dst[i] = src[i] & mask;
  return VecOk;
}

int vecConvert16sTo32f(const int16_t* src, float* dst, int n, int scale) {
  if (int status = check(src, dst, dst, n)) return status;
  // A power of two, so the product is exact for every 16-bit value.
  const float factor = std::ldexp(1.0f, -scale);
  for (int i = 0; i < n; ++i) dst[i] = static_cast<float>(src[i]) * factor;
  return VecOk;
}
