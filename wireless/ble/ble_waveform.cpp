// SPDX-License-Identifier: MIT
// GFSK samples of modulation index 0.5: a Bluetooth LE packet and its idle time.
#include "wireless/ble/ble_waveform.h"

#include "digital/filter_designs.h"
#include "dsp/interpolate_circular.h"
#include "wireless/ble/gfsk_rotors.h"

#include <climits>
#include <cmath>

namespace {

constexpr double bt = 0.5;
constexpr float impulse = 0.25f;  // a quarter cycle a symbol: modulation index 0.5

// The Gaussian frequency pulse, scaled in float so that its taps sum to 1.
std::vector<float> unitGaussian(int sps) {
  std::vector<float> taps(static_cast<size_t>(8 * sps + 1));
  designGaussian(taps.data(), static_cast<int>(taps.size()), bt, sps);
  float sum = 0.0f;
  for (const float t : taps) sum += t;
  for (float& t : taps) t /= sum;
  return taps;
}

}  // namespace

Waveform buildBleWaveform(const BleSettings& settings, int samplesPerSymbol, double idleSeconds,
                          const std::vector<uint8_t>& pduBits) {
  Waveform wave;
  const int sps = samplesPerSymbol;
  const std::vector<uint8_t> bits = buildBlePacketBits(settings, pduBits);
  if (bits.empty() || sps < 1 || sps > 16) return wave;
  const double rate = sps * 1e6 * (settings.phy == 1 ? 2.0 : 1.0);
  const double idle = idleSeconds / (1.0 / rate);
  const int64_t n = static_cast<int64_t>(bits.size()) * sps;
  if (!(idle < INT_MAX)) return wave;
  const int64_t zeros = idle >= 1.0 ? static_cast<int64_t>(idle) : 0;
  if (n + zeros > INT_MAX) return wave;

  std::vector<float> values(bits.size());
  for (size_t i = 0; i < bits.size(); ++i) values[i] = bits[i] ? impulse : -impulse;
  const std::vector<float> taps = unitGaussian(sps);
  // The track filterCircular gives over the zero-stuffed values, without the zeros' work.
  std::vector<float> track(static_cast<size_t>(n));
  interpolateCircular(values.data(), static_cast<int64_t>(values.size()), sps, taps.data(),
                      static_cast<int>(taps.size()), 0, n, track.data(), 1);
  reserveSamples(wave.samples, n + zeros);
  wave.samples.resize(static_cast<size_t>(n));
  wave.levelOffsetDb = integrateFrequencyTrack(track.data(), n, wave.samples.data());
  wave.samples.resize(static_cast<size_t>(n + zeros));
  wave.sampleRate = rate;
  return wave;
}
