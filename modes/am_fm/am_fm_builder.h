// SPDX-License-Identifier: MIT
// Pure builders of one modulation period of AM and FM ; no Qt, no device.
#pragma once

#include "modes/mode_types.h"

#include <cstdint>

// What the AM generator reads from ModeViewAM.
struct AmSettings {
  double rateHz = 1000.0;      // modulation rate, 1 to 1e7 as the view clamps it
  double depthPercent = 50.0;  // 0 to 100
  int shape = ModShapeSine;    // ModShape; another value builds nothing
};

// What the FM generator reads from ModeViewFM.
struct FmSettings {
  double rateHz = 1000.0;       // modulation rate, 1 to 1e7
  double deviationHz = 1000.0;  // peak deviation, 1 to 1e7, within a factor 1000 of the rate
  int shape = ModShapeSine;     // ModShape; another value builds nothing
};

// Samples in one modulation period and the rate they play at.
struct ModPeriod {
  int64_t length = 0;       // N
  double sampleRate = 0.0;  // S, samples a second; S = N x rate
};

constexpr double amFmMaxSampleRate = 5e7;
constexpr int64_t amMaxPeriod = 16384;
constexpr int64_t fmMinBuffer = 1024;

// AM: N = 16384 at S = rate x 16384, both halved while S > 5e7. Rate 1 gives 16384 at 16384/s;
// rate 1e7 gives 4 at 4e7/s.
ModPeriod amPeriod(double rateHz);

// FM: W = min(deviation, rate) x 3.0 x 1000.0 limited to 5e7; N = W / rate truncated, made even
// by subtracting 1; S = N x rate. The arithmetic runs in exactly this order, so a rate such
// as 3.3 Hz truncates 2999.9999999999995 to 2999 and plays 2998 samples a period.
ModPeriod fmPeriod(double rateHz, double deviationHz);

// One AM period: I = m(i) x depth/200 + 0.5, Q = 0, level uncorrected (levelOffsetDb 0).
// sampleRate is set whatever the shape; samples stay empty for an unknown shape.
Waveform buildAm(const AmSettings& settings);

// One FM period of constant-magnitude samples, integrated by repeated complex multiplication in
// float with no renormalisation (required: it shapes the output), then doubled while shorter
// than 1024 samples. Samples stay empty (and sampleRate 0) for an unknown shape or a period
// shorter than 2 samples, which the view's coupling rules out.
Waveform buildFm(const FmSettings& settings);

// The shape value m(i) in -1..1 shared by AM and FM, in double precision; h = N / 2 and
// q = h / 2 in integers. Returns false for an unknown shape.
bool modShapeValue(int shape, int64_t i, int64_t n, double& value);
