// SPDX-License-Identifier: MIT
// Types shared by the mode builders and views: enumerations of the combo boxes and the
// result of a build.
#pragma once

#include "dsp/sample.h"

#include <vector>

// Each is stored as the integer item data of its combo box and in presets.
enum ModShape { ModShapeSine = 0, ModShapeSquare = 1, ModShapeTriangle = 2, ModShapeRamp = 3 };
enum TriggerType { TriggerContinuous = 0, TriggerSingle = 1 };
enum MultiTonePhase { MultiTonePhaseFixed = 0, MultiTonePhaseRandom = 1, MultiTonePhaseParabolic = 2 };
enum StepSweepType { StepSweepFreq = 0, StepSweepFreqAmplitude = 1 };

// Item texts of the combo boxes, in value order.
extern const char* const modShapeTexts[4];
extern const char* const triggerTypeTexts[2];

// One repetition of a mode's output, as a builder returns it.
struct Waveform {
  std::vector<Sample> samples;
  double sampleRate = 0.0;     // samples a second
  double levelOffsetDb = 0.0;  // subtracted from the panel's level at retune
};
