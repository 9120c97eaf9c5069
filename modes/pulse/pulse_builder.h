// SPDX-License-Identifier: MIT
// Pure build of one pulse period: an on/off envelope with two-sample raised-cosine edges.
#pragma once

#include "modes/mode_types.h"

#include <cstdint>

struct PulseSettings {
  double widthSeconds = 0.001;   // 1e-7 to 1.0 in the view, never above the period
  double periodSeconds = 0.002;  // 1e-7 to 1.0 in the view
  TriggerType trigger = TriggerContinuous;
};

// How the period is laid out in samples.
struct PulseTiming {
  int64_t onSamples = 0;      // n: width x 4e7, truncated
  double sampleRate = 0.0;    // S = 1 / (width / n): bent away from 4e7 so the width is whole
  int64_t periodSamples = 0;  // L: S x period, truncated
  int edgeSamples = 0;        // r: 2 when n + 2 < L, else 0
};

// Nominal rate from which the width's sample count is taken.
constexpr double pulseNominalRate = 4e7;

// Empty periodSamples (0) when the numbers give no samples to play.
PulseTiming pulseTiming(const PulseSettings& settings);

// One period at the panel's level (no correction for the duty cycle: the level is that of the
// pulse). Samples 0 to n + r - 1 are (1, 0), the first and last r of them shaped, the rest of
// the period zero. Empty when pulseTiming gives no samples.
LongWaveform buildPulse(const PulseSettings& settings);
