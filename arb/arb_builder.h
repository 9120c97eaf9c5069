// SPDX-License-Identifier: MIT
// One play period of a loaded waveform: its play range, scaled, measured and padded.
#pragma once

#include "modes/mode_types.h"

#include <vector>

struct ArbPlaySettings {
  double sampleRateHz = 5e7;
  int sampleOffset = 0;         // first sample of the play range
  int samplesToUse = 0;         // length of the play range
  int period = 0;               // samples a period, the range padded with zeros
  bool autoScale = true;        // the peak component to 1.0
  double referenceScale = 100;  // %, used without auto scale
  bool outputSignalAverage = true;
};

// The play range of `samples` scaled: by the peak absolute value among all I and Q values
// (the peak component, not the peak magnitude, becomes 1.0; an all-zero range stays zero), or
// by the reference scale / 100. levelOffsetDb is the scaled range's mean power in dB when the
// level means the signal's average (so the padding's zeros don't count), else 0; with a range
// of zeros it is minus infinity, which the device layer refuses. Then zeros up to the period.
// A range of no samples, or one that doesn't lie inside `samples` (which the view's clamps
// prevent), gives no samples.
Waveform buildArbPlayback(const std::vector<Sample>& samples, const ArbPlaySettings& settings);

// The scaling of a play range, in place, over `count` samples (a whole sequence plays this
// way); answers the level offset as above.
double scaleArbSamples(Sample* samples, int64_t count, const ArbPlaySettings& settings);
