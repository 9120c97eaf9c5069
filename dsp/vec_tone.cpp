// SPDX-License-Identifier: MIT
// Complex exponential generator with a phase carried from one call to the next.
#include "dsp/vec_tone.h"

#include "dsp/vec_status.h"

#include <algorithm>
#include <cmath>

// Sample s + k of a block is start(s) × step(k): one exact sin/cos a block for start(s),
// a table of 64 steps, and a complex multiply per sample that the compiler vectorises. Phases
// are reduced to a fraction of a cycle in double before each sin/cos, so their error does not
// grow with the index.

namespace {

constexpr int kBlock = 64;
constexpr double kTwoPi = 6.283185307179586476925;

double fraction(double cycles) { return cycles - std::floor(cycles); }

template <class T>
void generate(float* d, int n, double magnitude, double f, double p0) {
  const int steps = std::min(n, kBlock);
  T wr[kBlock], wi[kBlock];
  for (int k = 0; k < steps; ++k) {
    const double a = kTwoPi * fraction(f * k);
    wr[k] = static_cast<T>(std::cos(a));
    wi[k] = static_cast<T>(std::sin(a));
  }
  for (int s = 0; s < n; s += kBlock) {
    const double a = kTwoPi * fraction(p0 + fraction(f * s));
    const T sr = static_cast<T>(magnitude * std::cos(a));
    const T si = static_cast<T>(magnitude * std::sin(a));
    const int count = std::min(kBlock, n - s);
    float* out = d + 2 * s;
    for (int k = 0; k < count; ++k) {
      out[2 * k] = static_cast<float>(sr * wr[k] - si * wi[k]);
      out[2 * k + 1] = static_cast<float>(sr * wi[k] + si * wr[k]);
    }
  }
}

}  // namespace

int vecTone32fc(Sample* dst, int n, float magnitude, float relFreq, float* phase, int hint) {
  if (n < 1) return VecErrSize;
  if (!dst || !phase) return VecErrNull;
  if (!std::isfinite(relFreq) || !std::isfinite(*phase) || !std::isfinite(magnitude))
    return VecErrRange;
  const double f = relFreq;
  const double p0 = fraction(*phase / kTwoPi);
  float* d = reinterpret_cast<float*>(dst);
  if (hint == VecHintAccurate)
    generate<double>(d, n, magnitude, f, p0);
  else
    generate<float>(d, n, magnitude, f, p0);
  float next = static_cast<float>(kTwoPi * fraction(p0 + fraction(f * n)));
  if (next >= static_cast<float>(kTwoPi)) next = 0.0f;  // rounding may reach 2π
  *phase = next;
  return VecOk;
}
