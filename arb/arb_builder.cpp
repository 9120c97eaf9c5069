// SPDX-License-Identifier: MIT
// One play period of a loaded waveform: its play range, scaled, measured and padded.
#include "arb/arb_builder.h"

#include <algorithm>
#include <cmath>

namespace {

void scale(Sample* range, int64_t count, const ArbPlaySettings& settings) {
  float factor = 1.0f;
  if (settings.autoScale) {
    float peak = 0.0f;
    for (int64_t k = 0; k < count; ++k)
      peak = std::max({peak, std::abs(range[k].real()), std::abs(range[k].imag())});
    if (peak == 0.0f) return;
    factor = 1.0f / peak;
  } else {
    const double s = settings.referenceScale / 100.0;
    if (s == 1.0) return;
    factor = static_cast<float>(s);
  }
  for (int64_t k = 0; k < count; ++k)
    range[k] = Sample(range[k].real() * factor, range[k].imag() * factor);
}

}  // namespace

double scaleArbSamples(Sample* samples, int64_t count, const ArbPlaySettings& settings) {
  scale(samples, count, settings);
  return settings.outputSignalAverage ? meanPowerDb(samples, count) : 0.0;
}

Waveform buildArbPlayback(const std::vector<Sample>& samples, const ArbPlaySettings& settings) {
  Waveform wave;
  const int64_t first = settings.sampleOffset, count = settings.samplesToUse;
  if (count <= 0 || first < 0 || first + count > static_cast<int64_t>(samples.size())) return wave;
  std::vector<Sample>& out = wave.samples;
  out.reserve(static_cast<size_t>(std::max<int64_t>(count, settings.period)));
  out.assign(samples.begin() + first, samples.begin() + first + count);
  wave.levelOffsetDb = scaleArbSamples(out.data(), count, settings);
  if (settings.period > count) out.resize(static_cast<size_t>(settings.period));
  wave.sampleRate = settings.sampleRateHz;
  return wave;
}
