// SPDX-License-Identifier: MIT
// Band-limited white Gaussian noise: a seeded record, filtered so that its end joins its start.
#pragma once

#include "modes/mode_types.h"

struct AwgnSettings {
  double bandwidthHz = 4e7;  // 5e4 to 4e7
  double lengthS = 0.01;     // 1e-4 to 0.2
  int seed = 23;             // 0 or more
};

// Rate 1.25 × bandwidth, length × rate samples (at least 65) of Gaussian noise from the seed,
// low-passed circularly to the bandwidth by 65 Blackman taps (cutoff 0.4 of the rate), divided
// by its greatest magnitude so that the peak sits at full scale. levelOffsetDb is the record's
// mean power in dB, so that the mean power plays at the panel's level. Equal settings give
// equal records. Settings no view allows (a rate that isn't a positive number) give no samples.
LongWaveform buildAwgn(const AwgnSettings& settings);

constexpr int awgnFilterTaps = 65;
constexpr double awgnRateFactor = 1.25;
