// SPDX-License-Identifier: MIT
// Pure builders of one modulation period of AM and FM.
#include "modes/am_fm/am_fm_builder.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double pi = 3.14159265358979323846;

}  // namespace

bool modShapeValue(int shape, int64_t i, int64_t n, double& value) {
  const int64_t h = n / 2;
  const int64_t q = h / 2;
  switch (shape) {
    case ModShapeSine:
      value = std::sin(static_cast<double>(i) * 2.0 * pi / static_cast<double>(n));
      return true;
    case ModShapeSquare: value = i < h ? 1.0 : -1.0; return true;
    case ModShapeTriangle: {
      const int64_t t = i < h ? i : n - i;
      // Only an FM period of 2 samples has q = 0 (AM has at least 4): t / q would divide by
      // zero and fill the buffer with NaN, so that case builds nothing, like an unknown shape.
      if (q == 0) return false;
      // q truncates: for N not a multiple of 4 the peak at t = h overshoots 1, and stays so.
      value = static_cast<double>(t) / static_cast<double>(q) - 1.0;
      return true;
    }
    case ModShapeRamp: value = static_cast<double>(i) / static_cast<double>(h) - 1.0; return true;
    default: return false;
  }
}

ModPeriod amPeriod(double rateHz) {
  ModPeriod period{amMaxPeriod, rateHz * static_cast<double>(amMaxPeriod)};
  // The length test only guards against rates far beyond the view's range.
  while (period.sampleRate > amFmMaxSampleRate && period.length > 0) {
    period.sampleRate /= 2.0;
    period.length >>= 1;
  }
  return period;
}

ModPeriod fmPeriod(double rateHz, double deviationHz) {
  const double m = std::min(deviationHz, rateHz);
  const double wanted = std::min(m * 3.0 * 1000.0, amFmMaxSampleRate);
  ModPeriod period;
  period.length = static_cast<int64_t>(wanted / rateHz);
  if (period.length % 2 != 0) period.length -= 1;
  period.sampleRate = static_cast<double>(period.length) * rateHz;
  return period;
}

Waveform buildAm(const AmSettings& settings) {
  const ModPeriod period = amPeriod(settings.rateHz);
  Waveform wave;
  wave.sampleRate = period.sampleRate;
  wave.levelOffsetDb = 0.0;  // the level is not corrected for the modulation
  const double d = settings.depthPercent / 200.0;
  const int64_t n = period.length;
  double m = 0.0;
  if (n <= 0 || !modShapeValue(settings.shape, 0, n, m)) return wave;
  wave.samples.assign(static_cast<size_t>(n), Sample(0.0f, 0.0f));
  for (int64_t i = 0; i < n; ++i) {
    modShapeValue(settings.shape, i, n, m);
    wave.samples[static_cast<size_t>(i)] = Sample(static_cast<float>(m * d + 0.5), 0.0f);
  }
  return wave;
}

Waveform buildFm(const FmSettings& settings) {
  const ModPeriod period = fmPeriod(settings.rateHz, settings.deviationHz);
  Waveform wave;
  const int64_t n = period.length;
  double m = 0.0;
  if (n < 2 || !modShapeValue(settings.shape, 0, n, m)) return wave;
  wave.sampleRate = period.sampleRate;
  wave.levelOffsetDb = 0.0;

  const double a = settings.deviationHz / period.sampleRate;  // cycles a sample
  std::vector<float> f(static_cast<size_t>(n));
  for (int64_t i = 0; i < n; ++i) {
    modShapeValue(settings.shape, i, n, m);
    f[static_cast<size_t>(i)] = static_cast<float>(m * a);
  }

  // y(0) = z(0), y(i) = y(i-1) z(i), all in float and never renormalised: every shape sums to
  // zero over the period, and that alone joins the end to the start.
  std::vector<Sample>& y = wave.samples;
  y.resize(static_cast<size_t>(n));
  float yr = 1.0f, yi = 0.0f;
  for (int64_t i = 0; i < n; ++i) {
    const double phase = 2.0 * pi * static_cast<double>(f[static_cast<size_t>(i)]);
    const float zr = static_cast<float>(std::cos(phase));
    const float zi = static_cast<float>(std::sin(phase));
    if (i == 0) {
      yr = zr;
      yi = zi;
    } else {
      const float r = yr * zr - yi * zi;
      const float im = yr * zi + yi * zr;
      yr = r;
      yi = im;
    }
    y[static_cast<size_t>(i)] = Sample(yr, yi);
  }

  while (static_cast<int64_t>(y.size()) < fmMinBuffer) {
    const size_t half = y.size();
    y.resize(2 * half);
    std::copy_n(y.begin(), half, y.begin() + static_cast<std::ptrdiff_t>(half));
  }
  return wave;
}
