// SPDX-License-Identifier: MIT
// The ramp sweep's chirp computed plainly by its definition: the reference of the builder's
// tests and the baseline of its benchmark.
#pragma once

#include "dsp/sample.h"

#include <cmath>
#include <cstdint>
#include <vector>

// The chirp exactly as defined: one serial double recursion, edges and zero tail.
inline std::vector<Sample> referenceRamp(double span, double sweepTime, double period) {
  constexpr double pi = 3.14159265358979323846;
  const int64_t L = int64_t(period * 5e7), K = int64_t(sweepTime * 5e7);
  std::vector<Sample> out(size_t(L), Sample(0, 0));
  const double b = span / 5e7, f0 = b * -0.5, s = b / K;
  double c = std::cos(2 * pi * f0), d = std::sin(2 * pi * f0);
  const double cs = std::cos(2 * pi * s), ds = std::sin(2 * pi * s);
  double x = 1, y = 0;
  out[0] = Sample(1, 0);
  for (int64_t k = 1; k < K; ++k) {
    const double nx = c * x - d * y, ny = y * c + d * x;
    x = nx;
    y = ny;
    out[size_t(k)] = Sample(float(x), float(y));
    const double nc = cs * c - ds * d, nd = d * cs + ds * c;
    c = nc;
    d = nd;
  }
  if (K < L) {
    for (int k = 0; k < 4; ++k) {
      const double w = std::cos(k * 0.25 * pi - pi) * 0.5 + 0.5;
      for (int64_t i : {int64_t(k), K - 1 - k})
        out[size_t(i)] = Sample(float(out[size_t(i)].real() * w), float(out[size_t(i)].imag() * w));
    }
  }
  return out;
}
