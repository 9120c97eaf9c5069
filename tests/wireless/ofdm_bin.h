// SPDX-License-Identifier: MIT
// Reading one subcarrier of a built frame's symbol back by a plain DFT, for the frame tests.
#pragma once

#include "wireless/wlan_types.h"

#include <cmath>
#include <complex>

// Subcarrier k of the 64-sample body of the OFDM symbol whose 16-sample guard starts at `start`.
inline Sample ofdmBin(const ComplexVector& frame, int start, int k) {
  std::complex<double> sum = 0;
  for (int t = 0; t < 64; ++t)
    sum += std::complex<double>(frame[start + 16 + t]) * std::polar(1.0, -2 * M_PI * k * t / 64);
  return Sample(static_cast<float>(sum.real()), static_cast<float>(sum.imag()));
}
