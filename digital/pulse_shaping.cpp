// SPDX-License-Identifier: MIT
// The pulse-shaping filter of the digital mode, by filter type.
#include "digital/pulse_shaping.h"

#include "digital/filter_designs.h"

#include <cmath>

std::vector<float> pulseShapingTaps(const PulseShapingSettings& s) {
  if (s.filterType == FilterCustom) return s.customTaps;
  const int os = s.oversample;
  if (os < 1 || s.filterLength < 1) return {};
  std::vector<float> taps(static_cast<size_t>(os * s.filterLength + 1));
  const int n = static_cast<int>(taps.size());
  switch (s.filterType) {
    case FilterRectangular: designRectangular(taps.data(), n, 1.0 / os, os); break;
    case FilterRaisedCosine: designRaisedCosine(taps.data(), n, s.alpha, os); break;
    case FilterRootRaisedCosine: designRootRaisedCosine(taps.data(), n, s.alpha, os); break;
    case FilterGaussian: designGaussian(taps.data(), n, s.alpha, os); break;
    case FilterHalfSine: designHalfSine(taps.data(), n, os); break;
    default: return {};
  }
  return taps;
}

std::vector<float> playbackTaps(const std::vector<float>& taps, int oversample) {
  double sum = 0.0;
  for (float t : taps) sum += t;
  if (!(sum != 0.0) || !std::isfinite(sum)) return {};
  std::vector<float> scaled;
  for (float t : taps) scaled.push_back(static_cast<float>(t * (oversample / sum)));
  return scaled;
}
