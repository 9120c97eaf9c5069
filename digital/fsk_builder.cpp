// SPDX-License-Identifier: MIT
// One repetition of 2, 4, 8 or 16-level FSK: a shaped frequency track integrated in float.
#include "digital/fsk_builder.h"

#include "digital/modulation_map.h"
#include "digital/pulse_shaping.h"
#include "dsp/interpolate_circular.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace {

constexpr int64_t kChunk = 2048;  // samples of track and output made at a time, in L1 cache

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
  const std::vector<float> taps = playbackTaps(settings.taps, os);
  if (symbols.empty() || os < 1 || taps.empty()) return wave;

  const double rate = settings.symbolRateHz * os;
  const double a = settings.deviationHz / rate;  // cycles a sample
  std::vector<float> impulses;
  for (uint32_t symbol : symbols)
    impulses.push_back(static_cast<float>(toneOf(1 << k, symbol) * a));
  const int64_t count = static_cast<int64_t>(impulses.size()), n = count * os;
  const double gap = settings.offDurationS / (1.0 / rate);
  const int64_t zeros = gap >= 1.0 && gap < 1e9 ? static_cast<int64_t>(gap) : 0;

  // The track is shaped a piece at a time and integrated straight away, into one allocation of
  // burst and gap grown a piece at a time. y(0) = z(0), y(i) = y(i-1) z(i), in float: the phase
  // runs on across symbols.
  constexpr float twoPi = 6.28318548f;  // 0x40C90FDB
  std::vector<Sample>& y = wave.samples;
  reserveSamples(y, n + zeros);
  std::vector<float> track(kChunk);
  const int tapCount = static_cast<int>(taps.size());
  float yr = 1.0f, yi = 0.0f;
  double power = 0.0;
  for (int64_t done = 0; done < n; done += kChunk) {
    const int64_t part = std::min(kChunk, n - done);
    y.resize(static_cast<size_t>(done + part));
    Sample* piece = y.data() + done;
    interpolateCircular(impulses.data(), count, os, taps.data(), tapCount, done, part, track.data(),
                        1);
    for (int64_t i = 0; i < part; ++i) {
      const double phase = track[i] * twoPi;
      const float zr = static_cast<float>(std::cos(phase)),
                  zi = static_cast<float>(std::sin(phase));
      const bool first = done + i == 0;
      const float r = first ? zr : yr * zr - yi * zi;
      yi = first ? zi : yr * zi + yi * zr;
      yr = r;
      piece[i] = Sample(yr, yi);
      power += std::norm(std::complex<double>(piece[i]));
    }
  }
  wave.sampleRate = rate;
  wave.levelOffsetDb = 10.0 * std::log10(power / static_cast<double>(n));
  y.resize(static_cast<size_t>(n + zeros));
  return wave;
}
