// SPDX-License-Identifier: MIT
// One play period of a loaded waveform: its play range, scaled, measured and padded.
#include "arb/arb_builder.h"

#include <algorithm>
#include <cmath>

namespace {

void scale(std::vector<Sample>& range, const ArbPlaySettings& settings) {
  float factor = 1.0f;
  if (settings.autoScale) {
    float peak = 0.0f;
    for (const Sample& s : range) peak = std::max({peak, std::abs(s.real()), std::abs(s.imag())});
    if (peak == 0.0f) return;
    factor = 1.0f / peak;
  } else {
    const double s = settings.referenceScale / 100.0;
    if (s == 1.0) return;
    factor = static_cast<float>(s);
  }
  for (Sample& s : range) s = Sample(s.real() * factor, s.imag() * factor);
}

}  // namespace

Waveform buildArbPlayback(const std::vector<Sample>& samples, const ArbPlaySettings& settings) {
  Waveform wave;
  const int64_t first = settings.sampleOffset, count = settings.samplesToUse;
  if (count <= 0 || first < 0 || first + count > static_cast<int64_t>(samples.size())) return wave;
  std::vector<Sample>& out = wave.samples;
  out.reserve(static_cast<size_t>(std::max<int64_t>(count, settings.period)));
  out.assign(samples.begin() + first, samples.begin() + first + count);
  scale(out, settings);
  wave.levelOffsetDb = settings.outputSignalAverage ? meanPowerDb(out.data(), count) : 0.0;
  if (settings.period > count) out.resize(static_cast<size_t>(settings.period));
  wave.sampleRate = settings.sampleRateHz;
  return wave;
}
