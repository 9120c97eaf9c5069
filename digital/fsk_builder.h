// SPDX-License-Identifier: MIT
// One repetition of 2, 4, 8 or 16-level FSK: a shaped frequency track integrated in float.
#pragma once

#include "modes/mode_types.h"

#include <cstdint>
#include <vector>

struct FskSettings {
  int mod = 15;             // DigitalMod 15 to 18
  std::vector<float> taps;  // the pulse-shaping taps, before scaling
  int oversample = 4;
  double symbolRateHz = 1e6;
  double deviationHz = 1e5;
  double offDurationS = 0.0;
  std::vector<uint8_t> bits;
};

// Bits a symbol of DigitalMod 15 to 18 (1 to 4); 0 for any other value.
int fskBitsPerSymbol(int mod);

// The symbols' frequencies as impulses os apart, shaped circularly by the taps scaled to sum to
// the oversample (so a run of one symbol holds its frequency), turned into per-sample rotors
// and multiplied up in float; then the gap's zeros. The phase at the end is in general not that
// at the start: continuous play rotates each repetition onto the last. levelOffsetDb is the
// burst's mean power. No samples for another mod, taps that sum to zero, or no whole symbol.
Waveform buildFsk(const FskSettings& settings);
