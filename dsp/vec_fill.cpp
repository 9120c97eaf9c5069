// SPDX-License-Identifier: MIT
// Fills and copies of float, double and complex sample arrays.
#include "dsp/vec_fill.h"

#include "dsp/vec_status.h"

#include <cstring>

namespace {

int check(const void* a, const void* b, int n) {
  if (n < 1) return VecErrSize;
  if (!a || !b) return VecErrNull;
  return VecOk;
}

int copyBytes(const void* src, void* dst, int n, size_t size) {
  if (int status = check(src, dst, n)) return status;
  if (src != dst) std::memcpy(dst, src, static_cast<size_t>(n) * size);
  return VecOk;
}

int moveBytes(const void* src, void* dst, int n, size_t size) {
  if (int status = check(src, dst, n)) return status;
  std::memmove(dst, src, static_cast<size_t>(n) * size);
  return VecOk;
}

template <class T>
int fill(T value, T* dst, int n) {
  if (int status = check(dst, dst, n)) return status;
  for (int i = 0; i < n; ++i) dst[i] = value;
  return VecOk;
}

}  // namespace

int vecCopy32f(const float* src, float* dst, int n) {
  return copyBytes(src, dst, n, sizeof(float));
}
int vecCopy32fc(const Sample* src, Sample* dst, int n) {
  return copyBytes(src, dst, n, sizeof(Sample));
}
int vecMove32f(const float* src, float* dst, int n) {
  return moveBytes(src, dst, n, sizeof(float));
}
int vecMove32fc(const Sample* src, Sample* dst, int n) {
  return moveBytes(src, dst, n, sizeof(Sample));
}

int vecSet32f(float value, float* dst, int n) { return fill(value, dst, n); }
int vecSet64f(double value, double* dst, int n) { return fill(value, dst, n); }

int vecSet32fc(float re, float im, Sample* dst, int n) {
  if (int status = check(dst, dst, n)) return status;
  float* d = reinterpret_cast<float*>(dst);
  for (int i = 0; i < n; ++i) {
    d[2 * i] = re;
    d[2 * i + 1] = im;
  }
  return VecOk;
}

int vecZero32f(float* dst, int n) { return fill(0.0f, dst, n); }
int vecZero32fc(Sample* dst, int n) { return vecSet32fc(0.0f, 0.0f, dst, n); }
