// SPDX-License-Identifier: MIT
// What the three WLAN modes share around a frame build: the PSDU from a bit source, the -6 dB
// level and the idle zeros that follow the frame.
#pragma once

#include "wireless/frame_shaping.h"
#include "wireless/wlan_types.h"

#include <optional>
#include <utility>

// The PSDU of `bytes` bytes from a bit source: cut to length, or repeated from its first bit.
// A source without a bit cannot fill even one byte and gives no value, where a plain repeat
// would never end.
std::optional<BitVector> psduFromSource(const BitVector& source, int bytes);

// Everything a WLAN mode plays apart from reading its controls.
template <class FrameParams>
struct WlanSettings {
  FrameParams frame;      // `data` is filled from the source here
  BitVector sourceBits;   // one PN period, or the custom pattern's bits
  int bytes = 64;
  double idleSeconds = 0.001;
  double sampleRate = 20e6;  // oversample x sample rate: what the idle count is taken at
};

constexpr double wlanFrameLevelDb = -6.0;

// The frame made by `build` at -6 dB RMS followed by its idle zeros; no samples when the source
// is empty.
template <class FrameParams, class Build>
ComplexVector buildWlanSamples(const WlanSettings<FrameParams>& settings, Build build) {
  std::optional<BitVector> psdu = psduFromSource(settings.sourceBits, settings.bytes);
  if (!psdu) return {};
  FrameParams params = settings.frame;
  params.data = std::move(*psdu);
  ComplexVector samples = normaliseRms(build(std::move(params)), wlanFrameLevelDb);
  appendIdleSamples(samples, settings.idleSeconds, settings.sampleRate);
  return samples;
}
