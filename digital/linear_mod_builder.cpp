// SPDX-License-Identifier: MIT
// One repetition of a linear digital modulation.
#include "digital/linear_mod_builder.h"

#include "digital/bit_sources.h"
#include "digital/pulse_shaping.h"
#include "dsp/interpolate_circular.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int64_t kChunk = 2048;  // samples shaped at a time, while in L1 cache

// The points the symbols select, I and Q apart. Differential: the state starts at 0 and its
// point comes first; each symbol then moves it by its offset, so there is one point more than
// symbols. The offsets are taken modulo the state count once, not once a symbol.
struct Rails {
  std::vector<float> re, im;
  void push(const Sample& point) {
    re.push_back(point.real());
    im.push_back(point.imag());
  }
};

Rails railsOf(const ModulationMap& map, const std::vector<Sample>& states,
              const std::vector<uint32_t>& symbols) {
  Rails rails;
  const int64_t count = static_cast<int64_t>(states.size());
  rails.re.reserve(symbols.size() + 1);
  rails.im.reserve(symbols.size() + 1);
  if (!map.differential) {
    for (uint32_t s : symbols) rails.push(states[s < count ? s : s % count]);
    return rails;
  }
  std::vector<int64_t> steps;
  for (int offset : map.diffStates) steps.push_back((offset % count + count) % count);
  int64_t state = 0;
  rails.push(states[0]);
  for (uint32_t s : symbols) {
    state += steps[s];
    if (state >= count) state -= count;
    rails.push(states[static_cast<size_t>(state)]);
  }
  return rails;
}

// Sum of I^2 + Q^2 in double, in four running sums so that the additions overlap.
double energyOf(const Sample* samples, int64_t n) {
  double sum[4] = {0.0, 0.0, 0.0, 0.0};
  int64_t i = 0;
  for (; i + 4 <= n; i += 4)
    for (int lane = 0; lane < 4; ++lane) {
      const double re = samples[i + lane].real(), im = samples[i + lane].imag();
      sum[lane] += re * re + im * im;
    }
  for (; i < n; ++i) {
    const double re = samples[i].real(), im = samples[i].imag();
    sum[0] += re * re + im * im;
  }
  return (sum[0] + sum[1]) + (sum[2] + sum[3]);
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
  const std::vector<float> taps = playbackTaps(settings.taps, os);
  if (symbols.empty() || taps.empty() || settings.map.states.empty() || os < 1) return wave;

  std::vector<Sample> states = settings.map.states;
  normalizeConstellation(states, settings.iqScaling);
  // The taps are real: each rail is shaped on its own.
  const Rails rails = railsOf(settings.map, states, symbols);
  const int64_t count = static_cast<int64_t>(rails.re.size()), n = count * os;
  wave.sampleRate = settings.symbolRateHz * os;
  const double gap = settings.offDurationS / (1.0 / wave.sampleRate);
  const int64_t zeros = gap >= 1.0 && gap < 1e9 ? static_cast<int64_t>(gap) : 0;
  // The I rail runs half a symbol late, round the record; Q stays.
  const int64_t lateI = settings.map.offsetQ ? os / 2 : 0;

  // One allocation for burst and gap, grown a piece at a time: each piece is zeroed and
  // shaped while in L1 cache.
  std::vector<Sample>& samples = wave.samples;
  reserveSamples(samples, n + zeros);
  const int tapCount = static_cast<int>(taps.size());
  double power = 0.0;
  for (int64_t done = 0; done < n; done += kChunk) {
    const int64_t part = std::min(kChunk, n - done);
    samples.resize(static_cast<size_t>(done + part));
    float* out = reinterpret_cast<float*>(samples.data() + done);
    interpolateCircular(rails.re.data(), count, os, taps.data(), tapCount, done - lateI, part, out,
                        2);
    interpolateCircular(rails.im.data(), count, os, taps.data(), tapCount, done, part, out + 1, 2);
    power += energyOf(samples.data() + done, part);
  }
  wave.levelOffsetDb = 10.0 * std::log10(power / static_cast<double>(n));
  samples.resize(static_cast<size_t>(n + zeros));
  return wave;
}
