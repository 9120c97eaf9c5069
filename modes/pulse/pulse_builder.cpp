// SPDX-License-Identifier: MIT
// Pure build of one pulse period: an on/off envelope with two-sample raised-cosine edges.
#include "modes/pulse/pulse_builder.h"

#include <algorithm>
#include <cmath>

namespace {

// Past this many samples a period can't be played anyway; it also keeps the conversions to
// integers defined for any input.
constexpr double maxSamples = 4e9;

constexpr double pi = 3.14159265358979323846;

}  // namespace

PulseTiming pulseTiming(const PulseSettings& settings) {
  PulseTiming timing;
  const double width = settings.widthSeconds;
  const double onCount = width * pulseNominalRate;
  // A width below a quarter of a nominal sample has no whole sample: its rate would divide
  // by zero.
  if (!(onCount >= 1.0 && onCount < maxSamples)) return timing;
  const int64_t n = static_cast<int64_t>(onCount);
  const double rate = 1.0 / (width / static_cast<double>(n));
  const double periodCount = rate * settings.periodSeconds;
  if (!(periodCount >= 1.0 && periodCount < maxSamples)) return timing;
  timing.onSamples = n;
  timing.sampleRate = rate;
  timing.periodSamples = static_cast<int64_t>(periodCount);
  timing.edgeSamples = n + 2 < timing.periodSamples ? 2 : 0;
  return timing;
}

LongWaveform buildPulse(const PulseSettings& settings) {
  LongWaveform wave;
  const PulseTiming timing = pulseTiming(settings);
  if (timing.periodSamples < 1) return wave;
  wave.sampleRate = timing.sampleRate;
  wave.samples = SampleBuffer(timing.periodSamples);  // zero: the off part needs no writes

  const int64_t n = timing.onSamples;
  const int r = timing.edgeSamples;
  // With the width equal to the period, rounding can leave the period a sample short of n.
  const int64_t body = std::min(n + r, timing.periodSamples);
  Sample* samples = wave.samples.data();
  std::fill(samples, samples + body, Sample(1.0f, 0.0f));
  // Raised-cosine edge: w = 0 and 0.5 for r = 2, on the first and last samples of the body.
  for (int k = 0; k < r; ++k) {
    const float w = static_cast<float>(0.5 * std::cos(double(k) / r * pi - pi) + 0.5);
    samples[k] *= w;
    samples[n + r - 1 - k] *= w;
  }
  return wave;
}
