// SPDX-License-Identifier: MIT
// One repetition of 2, 4, 8 or 16-level FSK: a shaped frequency track integrated in float.
#include "digital/fsk_builder.h"

#include "digital/modulation_map.h"
#include "dsp/filter_circular.h"
#include "dsp/vec_fir.h"

#include <cmath>
#include <complex>

namespace {

// The symbol's frequency in units of the deviation: 2FSK plays +1 for a one and -1 for
// anything else; the others are spread evenly from -1 to +1.
double toneOf(int levels, uint32_t symbol) {
  if (levels == 2) return symbol == 1 ? 1.0 : -1.0;
  return (2.0 * symbol - (levels - 1)) / (levels - 1);
}

}  // namespace

int fskBitsPerSymbol(int mod) {
  return mod >= DigitalMod2FSK && mod <= DigitalMod16FSK ? mod - DigitalMod2FSK + 1 : 0;
}

Waveform buildFsk(const FskSettings& settings) {
  Waveform wave;
  const int k = fskBitsPerSymbol(settings.mod), os = settings.oversample;
  const std::vector<uint32_t> symbols = symbolsFromBits(settings.bits, k);
  double sum = 0.0;
  for (float t : settings.taps) sum += t;
  if (symbols.empty() || os < 1 || !(sum != 0.0) || !std::isfinite(sum)) return wave;
  std::vector<float> taps;
  for (float t : settings.taps) taps.push_back(static_cast<float>(t * (os / sum)));

  const double rate = settings.symbolRateHz * os;
  const double a = settings.deviationHz / rate;  // cycles a sample
  const int64_t n = static_cast<int64_t>(symbols.size()) * os;
  std::vector<float> track(static_cast<size_t>(n));
  for (size_t s = 0; s < symbols.size(); ++s)
    track[s * os] = static_cast<float>(toneOf(1 << k, symbols[s]) * a);
  const VecStatePtr<VecFir32f> fir = vecFirCreate32f(taps.data(), static_cast<int>(taps.size()));
  filterCircular(fir.get(), track.data(), static_cast<int>(n));

  // y(0) = z(0), y(i) = y(i-1) z(i), in float: the phase runs on across symbols.
  constexpr float twoPi = 6.28318548f;  // 0x40C90FDB
  std::vector<Sample> y(static_cast<size_t>(n));
  float yr = 1.0f, yi = 0.0f;
  double power = 0.0;
  for (int64_t i = 0; i < n; ++i) {
    const double phase = track[static_cast<size_t>(i)] * twoPi;
    const float zr = static_cast<float>(std::cos(phase)), zi = static_cast<float>(std::sin(phase));
    const float r = i == 0 ? zr : yr * zr - yi * zi;
    yi = i == 0 ? zi : yr * zi + yi * zr;
    yr = r;
    y[static_cast<size_t>(i)] = Sample(yr, yi);
    power += std::norm(std::complex<double>(y[static_cast<size_t>(i)]));
  }
  wave.sampleRate = rate;
  wave.levelOffsetDb = 10.0 * std::log10(power / static_cast<double>(n));
  const double gap = settings.offDurationS / (1.0 / rate);
  if (gap >= 1.0 && gap < 1e9) y.resize(y.size() + static_cast<size_t>(gap));
  wave.samples = std::move(y);
  return wave;
}
