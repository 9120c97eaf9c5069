// SPDX-License-Identifier: MIT
// The fixed GFSK burst that mode index 12 plays: 342 bits at 1 Msym/s, ramped, then silence.
#include "wireless/ble/gfsk_burst.h"

#include "digital/filter_designs.h"
#include "wireless/ble/gfsk_rotors.h"

#include <vector>

namespace {

constexpr int sps = 4;
constexpr int tapCount = 33;
constexpr int syncPnBits = 64;
constexpr int payloadBits = 216;
constexpr float impulse = 0.0625f;  // with taps summing to sps: a quarter cycle a symbol

// The burst's one PN register, feeding back bits 8 and 3; it starts at 2.
class BurstPn {
public:
  uint8_t next() {
    const uint32_t b = ((state >> 8) ^ (state >> 3)) & 1;
    state = ((state & 255) * 2) | b;
    return static_cast<uint8_t>(b);
  }
  void append(std::vector<uint8_t>& bits, int count) {
    for (int i = 0; i < count; ++i) bits.push_back(next());
  }

private:
  uint32_t state = 2;
};

void appendPattern(std::vector<uint8_t>& bits, bool startsWithOne) {
  for (int i = 0; i < 4; ++i) bits.push_back(static_cast<uint8_t>((i % 2 == 0) == startsWithOne));
}

std::vector<uint8_t> burstBits() {
  BurstPn pn;
  std::vector<uint8_t> sync;
  pn.append(sync, syncPnBits);
  std::vector<uint8_t> bits;
  appendPattern(bits, sync.front() == 1);  // 1010 before a 1, 0101 before a 0
  bits.insert(bits.end(), sync.begin(), sync.end());
  appendPattern(bits, sync.back() == 0);  // 0101 after a 1, 1010 after a 0
  for (int pair = 0; pair < 9; ++pair)
    for (const uint8_t bit : {uint8_t{0}, uint8_t{1}}) bits.insert(bits.end(), 3, bit);
  pn.append(bits, payloadBits);
  return bits;
}

// Full linear convolution: the burst keeps the filter's tails, 1368 + 33 - 1 samples.
std::vector<float> frequencyTrack(const std::vector<uint8_t>& bits) {
  std::vector<float> taps(tapCount);
  designGaussian(taps.data(), tapCount, 0.5, sps);
  float sum = 0.0f;
  for (const float t : taps) sum += t;
  const float scale = sps / sum;
  for (float& t : taps) t *= scale;
  const size_t stuffed = bits.size() * sps;
  std::vector<float> track(stuffed + tapCount - 1, 0.0f);
  for (size_t s = 0; s < bits.size(); ++s) {
    const float value = bits[s] ? impulse : -impulse;
    for (int k = 0; k < tapCount; ++k) track[s * sps + k] += value * taps[k];
  }
  return track;
}

}  // namespace

Waveform buildGfskBurst() {
  const std::vector<float> track = frequencyTrack(burstBits());
  const int64_t n = static_cast<int64_t>(track.size());
  Waveform wave;
  wave.samples.assign(gfskBurstLength, Sample(0.0f, 0.0f));
  integrateFrequencyTrack(track.data(), n, wave.samples.data());
  const float ramp[] = {0.0f, 0.2f, 0.4f, 0.6f, 0.8f};
  for (int i = 0; i < 5; ++i) {
    wave.samples[static_cast<size_t>(i)] *= ramp[i];
    wave.samples[static_cast<size_t>(n - 1 - i)] *= ramp[i];
  }
  wave.sampleRate = 4e6;
  return wave;
}
