// SPDX-License-Identifier: MIT
// Pure builder of the multitone comb: rate, buffer length, tone frequencies and phases, samples.
#pragma once

#include "modes/mode_types.h"

#include <cstdint>
#include <functional>
#include <vector>

// What the multitone generator reads from ModeViewMultitone. Presets are not clamped, so any
// value can arrive here; see buildMultitone for what builds nothing.
struct MultitoneSettings {
  int toneCount = 3;                    // N; the view keeps 1 to 4001 and N x spacing <= 4e7
  double spacingHz = 1e6;               // D; the view keeps 0.001 to 2e7
  double notchWidthHz = 0.0;            // Z, centred on the carrier; the view keeps 0 to 4e7
  int phase = MultiTonePhaseParabolic;  // MultiTonePhase; an unknown value gives phases 0
  int seed = 23;                        // of the random phases
};

// Sample rate and buffer of a comb. Each tone makes a whole number of cycles in `length`
// samples, and the samples repeat every `period` = 2 j samples (length = 512 periods).
struct MultitoneGrid {
  bool valid = false;       // false: the settings build nothing (see buildMultitone)
  int64_t j = 0;            // grid factor of the rate
  double sampleRate = 0.0;  // S, samples a second: 2 j D (N odd), 2 j (D / 2) (N even)
  int64_t length = 0;       // L = j x 1024
  int64_t period() const { return 2 * j; }
};

// Hooks of a long build, all optional. The generator forwards the first three to the progress
// dialog and polls the run flag through keepGoing.
struct MultitoneProgress {
  std::function<void()> show;        // before the tones, when N > 200
  std::function<void(int)> percent;  // 0 to 99, every N / 20 tones, when N > 200
  std::function<void()> hide;        // after the tones, whenever show was called
  std::function<bool()> keepGoing;   // false abandons the build: empty result
};

// Buffers above this many samples (512 MB) build nothing: only an unclamped preset gets there,
// and the comb of 4001 tones needs 2.56e6.
constexpr int64_t multitoneMaxLength = int64_t(1) << 26;
// Above this tone count the build reports its progress.
constexpr int multitoneProgressThreshold = 200;

// The rate rule, with its double arithmetic as written so that ties fall the same way:
// N odd: j from N/2 + 1 up while j D < (N/2) D 1.25; N even: j from N - 1 up while
// j (D/2) < ((N/2) D - D/2) 1.25. Invalid for N < 1, D not finite and positive, a rate that
// isn't finite, or a length above multitoneMaxLength.
MultitoneGrid multitoneGrid(int toneCount, double spacingHz);

// Tone frequencies in cycles per sample, -0.5 to 0.5, rounded to float as the build compares
// them with the notch: ((i - h) D) / S for N odd, ((i - h) D + D 0.5) / S for N even, h = N / 2.
std::vector<float> multitoneFrequencies(const MultitoneGrid& grid, int toneCount, double spacingHz);

// Start phases in radians. Parabolic: k = i - h, p = (k - 1) pi (k - 1) / N + pi / 4 in float,
// reduced modulo 2 pi; random: uniform 0 to 6.2831855 from the seeded generator of the vector
// kernels; fixed (and unknown values): 0.
std::vector<float> multitonePhases(int phaseLaw, int toneCount, int seed);

// One repetition of the comb: tones of magnitude 1 at their frequencies and phases, those
// strictly inside the half notch Z / 2 / S left out, the sum divided by its peak magnitude.
// levelOffsetDb is the mean power in dB (<= 0), which the generator subtracts from the panel
// level so that the mean power plays at the panel's level. With every tone in the notch the
// samples are L zeros and levelOffsetDb is -infinity; the device refuses that level and keeps
// the one it had. Invalid grids, an exhausted heap and keepGoing() false give no samples.
// The tones sit on exact bins of one period, so the period comes from one inverse FFT and is
// repeated: the cost is O(L), not O(N L).
Waveform buildMultitone(const MultitoneSettings& settings, const MultitoneProgress& progress = {});

// The same comb the plain way, one tone over the whole buffer after another through the tone
// kernel (float frequencies, accurate hint), as the baseline of tests and benchmarks. Cost
// N x L tone samples. Where j is a power of two the float frequencies are exact and the two
// builds agree within float rounding; elsewhere this one drifts by the float rounding of each
// frequency over the buffer.
Waveform buildMultitoneDirect(const MultitoneSettings& settings,
                              const MultitoneProgress& progress = {});
