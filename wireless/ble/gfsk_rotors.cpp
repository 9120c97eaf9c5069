// SPDX-License-Identifier: MIT
// Phase integration shared by the GFSK builders: per-sample rotors multiplied up in float.
#include "wireless/ble/gfsk_rotors.h"

#include <cmath>
#include <complex>

double integrateFrequencyTrack(const float* track, int64_t n, Sample* out) {
  constexpr float twoPi = 6.28318548f;  // 2 pi rounded to float
  float yr = 1.0f, yi = 0.0f;
  double power = 0.0;
  for (int64_t i = 0; i < n; ++i) {
    const float phase = track[i] * twoPi;
    const float zr = std::cos(phase), zi = std::sin(phase);
    const float r = yr * zr - yi * zi;
    yi = yr * zi + yi * zr;
    yr = r;
    out[i] = Sample(yr, yi);
    power += double{yr} * yr + double{yi} * yi;
  }
  return n > 0 ? 10.0 * std::log10(power / static_cast<double>(n)) : 0.0;
}
