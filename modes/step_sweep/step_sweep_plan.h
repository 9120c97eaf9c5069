// SPDX-License-Identifier: MIT
// Pure plan of a step sweep: the frequency and level of each point and the dwell in samples.
#pragma once

#include "modes/mode_types.h"

#include <cstdint>

struct StepSweepSettings {
  double startFreqHz = 1e9;  // 3e7 to 6e9
  double stopFreqHz = 2e9;   // 3e7 to 6e9; below the start the sweep runs downwards
  int points = 201;          // 2 to 10001
  double startLevelDbm = -20.0;
  double stopLevelDbm = -20.0;
  double dwellSeconds = 0.001;  // 1e-6 to 10
  TriggerType trigger = TriggerContinuous;
  StepSweepType type = StepSweepFreq;
};

// The step sweep feeds a constant carrier at a fixed rate and retunes the device itself from
// point to point, in pieces of a reused buffer.
constexpr double stepSweepSampleRate = 5e7;
constexpr int stepSweepPieceSamples = 500000;

struct StepSweepPlan {
  double startFreqHz = 0.0;
  double freqStepHz = 0.0;
  double startLevelDbm = 0.0;
  double levelStepDb = 0.0;
  int points = 2;
  int64_t dwellSamples = 0;  // dwell x 5e7, truncated; 50 for 1e-6 s
  bool singleShot = false;

  // Exactly as the device is told, point by point: i x step + start.
  double frequencyAt(int i) const { return i * freqStepHz + startFreqHz; }
  double levelAt(int i) const { return i * levelStepDb + startLevelDbm; }
};

// A "Freq" sweep plays every point at `panelLevelDbm` and ignores both level settings. Fewer
// than two points count as two. A dwell without a whole sample plans no samples (0), and such a
// sweep must not run: it would retune without pause.
StepSweepPlan planStepSweep(const StepSweepSettings& settings, double panelLevelDbm);
