// SPDX-License-Identifier: MIT
// One repetition of a linear digital modulation.
#include "digital/linear_mod_builder.h"

#include "digital/bit_sources.h"
#include "dsp/filter_circular.h"
#include "dsp/vec_fir.h"

#include <cmath>

namespace {

// The points the symbols select. Differential: the state starts at 0 and its point comes
// first; each symbol then moves it by its offset, so there is one point more than symbols.
std::vector<Sample> pointsOf(const ModulationMap& map, const std::vector<Sample>& states,
                             const std::vector<uint32_t>& symbols) {
  std::vector<Sample> points;
  if (!map.differential) {
    for (uint32_t s : symbols) points.push_back(states[s % states.size()]);
    return points;
  }
  const int64_t count = static_cast<int64_t>(states.size());
  int64_t state = 0;
  points.push_back(states[0]);
  for (uint32_t s : symbols) {
    state = (state + map.diffStates[s]) % count;
    if (state < 0) state += count;
    points.push_back(states[static_cast<size_t>(state)]);
  }
  return points;
}

// Taps scaled to sum to the oversample, so that a long run of one symbol reaches its point
// after zero stuffing; empty when they sum to nothing.
std::vector<Sample> playbackTaps(const std::vector<float>& taps, int oversample) {
  double sum = 0.0;
  for (float t : taps) sum += t;
  if (!(sum != 0.0) || !std::isfinite(sum)) return {};
  std::vector<Sample> scaled;
  for (float t : taps) scaled.emplace_back(static_cast<float>(t * (oversample / sum)), 0.0f);
  return scaled;
}

}  // namespace

std::vector<uint8_t> modulationBits(int sequence, int seed, const QString& customBits,
                                    int bitsPerSymbol) {
  if (sequence == -1) return bitsFromText(customBits);
  const std::vector<uint8_t> period = generatePnBits(sequence, static_cast<uint32_t>(seed));
  std::vector<uint8_t> bits;
  for (int pass = 0; pass < bitsPerSymbol; ++pass)
    bits.insert(bits.end(), period.begin(), period.end());
  return bits;
}

Waveform buildLinearMod(const LinearModSettings& settings) {
  Waveform wave;
  const int os = settings.oversample;
  const int k = bitsPerSymbol(settings.map);
  const std::vector<uint32_t> symbols = symbolsFromBits(settings.bits, k);
  const std::vector<Sample> taps = playbackTaps(settings.taps, os);
  if (symbols.empty() || taps.empty() || settings.map.states.empty() || os < 1) return wave;

  std::vector<Sample> states = settings.map.states;
  normalizeConstellation(states, settings.iqScaling);
  const std::vector<Sample> points = pointsOf(settings.map, states, symbols);

  const int64_t n = static_cast<int64_t>(points.size()) * os;
  std::vector<Sample> samples(static_cast<size_t>(n));
  for (size_t p = 0; p < points.size(); ++p) samples[p * os] = points[p];
  const VecStatePtr<VecFir32fc> fir = vecFirCreate32fc(taps.data(), static_cast<int>(taps.size()));
  filterCircular(fir.get(), samples.data(), static_cast<int>(n));

  // The I rail runs half a symbol late, round the record; Q stays.
  if (settings.map.offsetQ) {
    const int64_t h = os / 2;
    std::vector<float> rail(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i) rail[static_cast<size_t>((i + h) % n)] = samples[i].real();
    for (int64_t i = 0; i < n; ++i) samples[i].real(rail[static_cast<size_t>(i)]);
  }

  wave.sampleRate = settings.symbolRateHz * os;
  wave.levelOffsetDb = meanPowerDb(samples.data(), n);
  const double gap = settings.offDurationS / (1.0 / wave.sampleRate);
  if (gap >= 1.0 && gap < 1e9) samples.resize(samples.size() + static_cast<size_t>(gap));
  wave.samples = std::move(samples);
  return wave;
}
