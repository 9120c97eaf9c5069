// SPDX-License-Identifier: MIT
// Pure build of one ramp sweep period: a linear chirp at baseband by oscillator recursion.
#pragma once

#include "modes/mode_types.h"

#include <atomic>
#include <cstdint>

struct RampSweepSettings {
  double spanHz = 2e7;              // 1 to 4e7
  double sweepTimeSeconds = 0.001;  // 1e-6 to 1.0
  double periodSeconds = 0.001;     // sweep time to 1.0
  TriggerType trigger = TriggerContinuous;
};

// The mode's fixed rate.
constexpr double rampSweepSampleRate = 5e7;

// State of the oscillator recursion: phasor (x, y) and its rotor (c, d), advanced each sample
// by the rotor's step (cs, ds). All double; the phasor is stored rounded to float.
struct ChirpRecursion {
  double x = 1.0, y = 0.0;
  double c = 1.0, d = 0.0;
  double cs = 1.0, ds = 0.0;

  // Rotor at startCycles and step stepCycles, both in cycles per sample.
  static ChirpRecursion start(double startCycles, double stepCycles);
  // Writes the next `count` samples (from sample 1 of the sweep on; sample 0 is (1, 0)).
  // Blocks of any size give bit for bit the result of one long run.
  void run(Sample* out, int64_t count);
};

// One period: K = sweep time x 5e7 samples of chirp from -span / 2 to +span / 2, then zeros up
// to L = period x 5e7, the chirp's first and last four samples shaped when there are zeros.
// The magnitude is 1.0 (the level is the panel's). Polls `running`, if given, and returns
// an empty waveform once it has fallen.
LongWaveform buildRampSweep(const RampSweepSettings& settings,
                            const std::atomic<bool>* running = nullptr);
