// SPDX-License-Identifier: MIT
// Pure build of one ramp sweep period: a linear chirp at baseband by oscillator recursion.
#include "modes/ramp_sweep/ramp_sweep_builder.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;
// Past this many samples a period can't be played anyway; it also keeps the conversions to
// integers defined for any input.
constexpr double maxSamples = 4e9;
// Samples between looks at the run flag: about 1 ms of build.
constexpr int64_t pollBlock = int64_t(1) << 18;

bool stillRunning(const std::atomic<bool>* running) {
  return !running || running->load(std::memory_order_relaxed);
}

int64_t sampleCount(double seconds) {
  const double count = seconds * rampSweepSampleRate;
  return count >= 1.0 && count < maxSamples ? static_cast<int64_t>(count) : 0;
}

// The recursion is strictly serial and its rounding drifts with the sample index (over a
// second the magnitude drifts by several per cent), so it runs exactly as defined, block by
// block; a block continues the last bit for bit. False when stopped on the way.
bool writeChirp(Sample* out, int64_t sweepSamples, double startCycles, double stepCycles,
                const std::atomic<bool>* running) {
  ChirpRecursion chirp = ChirpRecursion::start(startCycles, stepCycles);
  out[0] = Sample(1.0f, 0.0f);
  for (int64_t next = 1; next < sweepSamples; next += pollBlock) {
    if (!stillRunning(running)) return false;
    chirp.run(out + next, std::min(pollBlock, sweepSamples - next));
  }
  return true;
}

// Four-sample raised-cosine edges on both ends of the chirp, against the zeros that follow.
void shapeEdges(Sample* samples, int64_t sweepSamples) {
  for (int k = 0; k < 4; ++k) {
    const double w = std::cos(k * 0.25 * pi - pi) * 0.5 + 0.5;
    for (const int64_t i : {int64_t(k), sweepSamples - 1 - k}) {
      if (i < 0 || i >= sweepSamples) continue;  // only for a chirp shorter than four samples
      samples[i] = Sample(static_cast<float>(samples[i].real() * w),
                          static_cast<float>(samples[i].imag() * w));
    }
  }
}

}  // namespace

ChirpRecursion ChirpRecursion::start(double startCycles, double stepCycles) {
  ChirpRecursion r;
  r.c = std::cos(2.0 * pi * startCycles);
  r.d = std::sin(2.0 * pi * startCycles);
  r.cs = std::cos(2.0 * pi * stepCycles);
  r.ds = std::sin(2.0 * pi * stepCycles);
  return r;
}

void ChirpRecursion::run(Sample* out, int64_t count) {
  // Locals keep the state in registers; the order of the operations is the definition's.
  double px = x, py = y, rc = c, rd = d;
  const double sc = cs, sd = ds;
  for (int64_t i = 0; i < count; ++i) {
    const double nx = rc * px - rd * py;
    const double ny = py * rc + rd * px;
    px = nx;
    py = ny;
    out[i] = Sample(static_cast<float>(px), static_cast<float>(py));
    const double nc = sc * rc - sd * rd;
    const double nd = rd * sc + sd * rc;
    rc = nc;
    rd = nd;
  }
  x = px;
  y = py;
  c = rc;
  d = rd;
}

LongWaveform buildRampSweep(const RampSweepSettings& settings, const std::atomic<bool>* running) {
  LongWaveform wave;
  const int64_t periodSamples = sampleCount(settings.periodSeconds);
  // The view keeps the period at or above the sweep time; a sweep past the period is cut.
  const int64_t sweepSamples = std::min(sampleCount(settings.sweepTimeSeconds), periodSamples);
  if (sweepSamples < 1 || !std::isfinite(settings.spanHz)) return wave;

  const double b = settings.spanHz / rampSweepSampleRate;
  const double startCycles = b * -0.5;
  const double stepCycles = b / static_cast<double>(sweepSamples);

  wave.samples = SampleBuffer(periodSamples);  // zero: the tail after the sweep needs no writes
  if (!writeChirp(wave.samples.data(), sweepSamples, startCycles, stepCycles, running))
    return LongWaveform();
  // With the period equal to the sweep time the chirp restarts from its last sample: the jump
  // in frequency at the wrap is accepted and no edge is shaped.
  if (sweepSamples < periodSamples) shapeEdges(wave.samples.data(), sweepSamples);
  wave.sampleRate = rampSweepSampleRate;
  return wave;
}
