// SPDX-License-Identifier: MIT
// The pulse-shaping filter of the digital mode, by filter type.
#pragma once

#include <vector>

// Item data of "Filter Type" and the integer in presets; the combo box lists half-sine before
// custom.
enum FilterType : int {
  FilterRectangular = 0,
  FilterRaisedCosine = 1,
  FilterRootRaisedCosine = 2,
  FilterGaussian = 3,
  FilterCustom = 4,
  FilterHalfSine = 5,
};

struct PulseShapingSettings {
  int filterType = FilterRootRaisedCosine;
  double alpha = 0.35;   // roll-off, or the BT product of the Gaussian
  int filterLength = 8;  // symbols
  int oversample = 4;    // samples a symbol
  std::vector<float> customTaps;
};

// oversample × filter length + 1 taps of the built-in designs at oversample samples a symbol;
// the custom taps as they stand, whatever their count. An unknown type or a size no view allows
// (oversample or length below 1) gives no taps, and so no output.
std::vector<float> pulseShapingTaps(const PulseShapingSettings& settings);

// The taps scaled to sum to the oversample, so that after zero stuffing a long run of one
// symbol reaches its value; empty when they sum to nothing (or to no number).
std::vector<float> playbackTaps(const std::vector<float>& taps, int oversample);
