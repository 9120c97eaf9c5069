// SPDX-License-Identifier: MIT
// The impairment chain's noise record and circular channel filter, free of widgets.
#pragma once

#include "dsp/sample.h"

#include <vector>

// The record is made once, zeroed, and never reallocated: rebuilding it at each restart costs
// a fill and a filter, and laying it over a chunk costs one vector addition. The read index
// wraps and is never reset, so the noise repeats every `noiseLength` samples across restarts.
// Used from one thread at a time (the streaming thread, or a test).
class ImpairmentNoise {
public:
  static constexpr int noiseLength = 0x100000;
  static constexpr int filterTaps = 65;
  // Bounds of the noise filter's cutoff, in cycles per sample.
  static constexpr double minCutoff = 0.01;
  static constexpr double maxCutoff = 0.4;

  ImpairmentNoise() : noise(noiseLength) {}

  // Fills the record with Gaussian noise of seed 0 (the same at every build), low-passed to
  // `bandwidthHz` at `sampleRateHz` (cutoff bandwidth / rate × 0.5, bounded to the cutoffs
  // above) and scaled to a mean power `snrDb` below `signalPowerDb`. Returns the bandwidth
  // really used, sampleRateHz × 2 × cutoff. A power that would be infinite leaves zeros.
  double prepare(double signalPowerDb, double sampleRateHz, double snrDb, double bandwidthHz);
  // out = in + the record from the read index on; `in` and `out` may be the same array.
  void add(const Sample* in, Sample* out, int count);

  std::vector<Sample> noise;
  int noiseIndex = 0;
  bool noiseValid = false;
};

// Filters `length` samples in place with `taps` as one period of an endless signal (no
// transient at the wrap, the filter's delay removed). Nothing happens without taps or samples.
void applyCircularFir(const std::vector<Sample>& taps, Sample* samples, int length);
