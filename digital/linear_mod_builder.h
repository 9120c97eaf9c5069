// SPDX-License-Identifier: MIT
// One repetition of a linear digital modulation: symbols mapped, zero-stuffed, shaped
// circularly, with the optional half-symbol rail offset and the gap after the burst.
#pragma once

#include "digital/modulation_map.h"
#include "modes/mode_types.h"

#include <QString>

#include <cstdint>
#include <vector>

struct LinearModSettings {
  ModulationMap map;        // the map in force, before scaling
  std::vector<float> taps;  // the pulse-shaping taps, before scaling
  int oversample = 4;       // samples a symbol: 2, 4 or 8
  double symbolRateHz = 1e6;
  float iqScaling = 1.0f;  // RMS of the scaled map
  double offDurationS = 0.0;
  std::vector<uint8_t> bits;
};

// The bits a modulation plays: the user's pattern once for sequence -1, else the whole PN
// sequence of that order and seed, `bitsPerSymbol` times over, so that every symbol alignment
// of it is played.
std::vector<uint8_t> modulationBits(int sequence, int seed, const QString& customBits,
                                    int bitsPerSymbol);

// The burst at symbol rate × oversample with the level correction of its mean power, then the
// gap's zeros. No samples for what only a preset can bring: a map whose count is no power of
// two, taps that sum to zero, no bits for a whole symbol.
Waveform buildLinearMod(const LinearModSettings& settings);
