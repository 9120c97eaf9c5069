// SPDX-License-Identifier: MIT
// Windowed-sinc low-pass design and linear convolution in double precision.
#include "dsp/vec_design.h"

#include "dsp/vec_status.h"

#include <cmath>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;

// Zeroth-order modified Bessel function of the first kind, by its power series.
double besselI0(double x) {
  double term = 1.0, sum = 1.0;
  const double q = 0.25 * x * x;
  for (int k = 1; k < 200 && term > 1e-17 * sum; ++k) {
    term *= q / (static_cast<double>(k) * k);
    sum += term;
  }
  return sum;
}

// Symmetric window value at tap k of `length`; position runs from 0 to 1 over the taps.
double windowAt(int window, int k, int length, double kaiserBeta) {
  if (length == 1) return 1.0;
  const double position = static_cast<double>(k) / (length - 1);
  const double c1 = std::cos(2.0 * kPi * position);
  switch (window) {
    case VecWindowBlackman: return 0.42 - 0.5 * c1 + 0.08 * std::cos(4.0 * kPi * position);
    case VecWindowHamming: return 0.54 - 0.46 * c1;
    case VecWindowHann: return 0.5 - 0.5 * c1;
    case VecWindowKaiser: {
      const double r = 2.0 * position - 1.0;
      return besselI0(kaiserBeta * std::sqrt(std::fmax(0.0, 1.0 - r * r))) / besselI0(kaiserBeta);
    }
    default: return 1.0;
  }
}

}  // namespace

int vecDesignLowpass(double relCutoff, double* taps, int length, int window, bool normalise,
                     double kaiserBeta) {
  if (length < 1) return VecErrSize;
  if (!taps) return VecErrNull;
  if (!(relCutoff > 0.0 && relCutoff < 0.5) || window < VecWindowRectangular ||
      window > VecWindowKaiser)
    return VecErrRange;
  const double centre = 0.5 * (length - 1);
  double sum = 0.0;
  for (int k = 0; k < length; ++k) {
    const double t = k - centre;
    const double sinc =
        t == 0.0 ? 2.0 * relCutoff : std::sin(2.0 * kPi * relCutoff * t) / (kPi * t);
    taps[k] = sinc * windowAt(window, k, length, kaiserBeta);
    sum += taps[k];
  }
  if (normalise && sum != 0.0)
    for (int k = 0; k < length; ++k) taps[k] /= sum;
  return VecOk;
}

int vecConvolve64f(const double* a, int lengthA, const double* b, int lengthB, double* dst) {
  if (lengthA < 1 || lengthB < 1) return VecErrSize;
  if (!a || !b || !dst) return VecErrNull;
  for (int k = 0; k < lengthA + lengthB - 1; ++k) dst[k] = 0.0;
  for (int i = 0; i < lengthA; ++i)
    for (int j = 0; j < lengthB; ++j) dst[i + j] += a[i] * b[j];
  return VecOk;
}

void designLowpass(float* h, int n, double cutoff, int window, bool normalize) {
  if (n < 1 || !h) return;
  if (cutoff >= 0.5) cutoff = 0.49f;
  std::vector<double> taps(static_cast<size_t>(n));
  const bool designed = vecDesignLowpass(cutoff, taps.data(), n, window, normalize) == VecOk;
  for (int k = 0; k < n; ++k) h[k] = designed ? static_cast<float>(taps[k]) : 0.0f;
}
