// SPDX-License-Identifier: MIT
// Types shared by the mode builders and views: enumerations of the combo boxes and the
// result of a build.
#pragma once

#include "dsp/sample.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

// Each is stored as the integer item data of its combo box and in presets.
enum ModShape { ModShapeSine = 0, ModShapeSquare = 1, ModShapeTriangle = 2, ModShapeRamp = 3 };
enum TriggerType { TriggerContinuous = 0, TriggerSingle = 1 };
enum MultiTonePhase {
  MultiTonePhaseFixed = 0,
  MultiTonePhaseRandom = 1,
  MultiTonePhaseParabolic = 2
};
enum StepSweepType { StepSweepFreq = 0, StepSweepFreqAmplitude = 1 };

// Item texts of the combo boxes, in value order.
extern const char* const modShapeTexts[4];
extern const char* const triggerTypeTexts[2];
extern const char* const stepSweepTypeTexts[2];

// The clamp of the views' slots. A NaN is no value of the range: the control keeps `current`.
inline double clampOr(double value, double low, double high, double current) {
  return std::isnan(value) ? current : std::clamp(value, low, high);
}

// Seeds are kept by their magnitude; that of INT_MIN doesn't fit and is taken as the greatest.
inline int seedMagnitude(int seed) { return seed == INT_MIN ? INT_MAX : std::abs(seed); }

// 10 log10 of the mean of I^2 + Q^2 over n samples, summed in double; minus infinity for zeros.
// Modes with a varying envelope retune by it, so that the mean power plays at the panel's level.
double meanPowerDb(const Sample* samples, int64_t n);

// Makes room for count samples in a vector that a build then fills, and has the system map a
// long one's pages in one call: cheaper than a page fault at the first write to every 4 KB.
// Huge pages would be cheaper still while freed ones are at hand, but on a machine that hands
// free memory back to its host they cost several times as much on a build after a pause.
void reserveSamples(std::vector<Sample>& samples, int64_t count);

// One repetition of a mode's output, as a builder returns it.
struct Waveform {
  std::vector<Sample> samples;
  double sampleRate = 0.0;     // samples a second
  double levelOffsetDb = 0.0;  // subtracted from the panel's level at retune
};

// Samples of a long build (a pulse or ramp period holds up to 400 MB). The system hands the
// memory over zero-filled and supplies the zeros lazily, so a build pays only for the samples
// it writes, and large buffers sit on huge pages, which makes the first touch cheap. Move-only.
class SampleBuffer {
public:
  SampleBuffer() = default;
  // count samples of (0, 0); an empty buffer for count < 1. Ends the program, as any
  // exhausted allocation does, if the memory isn't there.
  explicit SampleBuffer(int64_t count);
  ~SampleBuffer();
  SampleBuffer(SampleBuffer&& other) noexcept;
  SampleBuffer& operator=(SampleBuffer&& other) noexcept;
  SampleBuffer(const SampleBuffer&) = delete;
  SampleBuffer& operator=(const SampleBuffer&) = delete;

  Sample* data() { return samples; }
  const Sample* data() const { return samples; }
  int64_t size() const { return count; }
  bool empty() const { return count == 0; }
  Sample& operator[](int64_t i) { return samples[i]; }
  const Sample& operator[](int64_t i) const { return samples[i]; }

private:
  void release();

  Sample* samples = nullptr;
  int64_t count = 0;
  size_t mappedBytes = 0;
};

// A long repetition: as Waveform, with the samples in a SampleBuffer.
struct LongWaveform {
  SampleBuffer samples;
  double sampleRate = 0.0;     // samples a second
  double levelOffsetDb = 0.0;  // subtracted from the panel's level at retune
};
