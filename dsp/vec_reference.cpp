// SPDX-License-Identifier: MIT
// Plain loops that define what the optimised kernels compute; tests and benchmarks use them.
#include "dsp/vec_reference.h"

#include <cmath>
#include <complex>

namespace vecref {

double sum32f(const float* src, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += src[i];
  return sum;
}

void tone32fc(Sample* dst, int n, float magnitude, float relFreq, float phase) {
  const double twoPi = 6.283185307179586476925;
  for (int i = 0; i < n; ++i) {
    const double cycles = static_cast<double>(relFreq) * i;
    const double a = static_cast<double>(phase) + twoPi * (cycles - std::floor(cycles));
    dst[i] = Sample(static_cast<float>(magnitude * std::cos(a)),
                    static_cast<float>(magnitude * std::sin(a)));
  }
}

void fir32f(const float* taps, int length, const float* src, float* dst, int n) {
  for (int t = 0; t < n; ++t) {
    double acc = 0.0;
    for (int k = 0; k < length && k <= t; ++k) acc += static_cast<double>(taps[k]) * src[t - k];
    dst[t] = static_cast<float>(acc);
  }
}

void fir32fc(const Sample* taps, int length, const Sample* src, Sample* dst, int n) {
  for (int t = 0; t < n; ++t) {
    std::complex<double> acc = 0.0;
    for (int k = 0; k < length && k <= t; ++k)
      acc += std::complex<double>(taps[k]) * std::complex<double>(src[t - k]);
    dst[t] = Sample(acc);
  }
}

void add32fc(const Sample* a, const Sample* b, Sample* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = a[i] + b[i];
}

}  // namespace vecref
