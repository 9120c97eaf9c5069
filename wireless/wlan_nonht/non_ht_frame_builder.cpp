// SPDX-License-Identifier: MIT
// The non-HT (802.11a) PPDU: L-STF, L-LTF, SIGNAL and DATA, and the finished mode samples.
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

#include "wireless/convolutional_encoder.h"
#include "wireless/frame_shaping.h"
#include "wireless/ofdm_symbol.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/training_fields.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_interleaver.h"
#include "wireless/wlan_mapper.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int serviceBits = 16;
constexpr int tailBits = 6;
constexpr int preambleSamples = 400;  // L-STF, L-LTF and SIGNAL
constexpr int symbolSamples = 80;

// RATE in bits 0..3, LENGTH in bits 5..16, even parity over those in bit 17.
uint32_t signalValue(int rateCode, long long lengthBytes) {
  uint32_t value = static_cast<uint32_t>(rateCode & 0xF);
  value |= static_cast<uint32_t>(lengthBytes & 0xFFF) << 5;
  value |= static_cast<uint32_t>(__builtin_popcount(value) & 1) << 17;
  return value;
}

void appendSignal(ComplexVector& frame, int rateCode, long long lengthBytes, WlanFft& fft) {
  const BitVector coded =
      ConvolutionalEncoder(WlanRate1_2).encode(signalFieldBits(signalValue(rateCode, lengthBytes)));
  const float pilots[4] = {1.0f, 1.0f, 1.0f, 1.0f};
  appendSymbol(frame, placeLegacySymbol(mapBpsk(interleave48(coded, 1)), pilots), fft, false);
}

// SERVICE zeros, the PSDU, then the tail and pad zeros, scrambled as one stream if asked.
BitVector dataStream(const NonHtFrameParams& params, long long padBits) {
  BitVector stream(serviceBits + params.data.size() + static_cast<size_t>(padBits + tailBits), 0);
  std::copy(params.data.begin(), params.data.end(), stream.begin() + serviceBits);
  return params.scrambled ? scrambleBits(params.scramblerInit, stream) : stream;
}

void appendData(ComplexVector& frame, const NonHtFrameParams& params, const BitVector& coded,
                long long symbols, WlanFft& fft) {
  const int bpsc = params.rate.bitsPerSubcarrier;
  const int perSymbol = bpsc * 48;
  int polarity = 1;  // p_0 belongs to SIGNAL
  for (long long n = 0; n < symbols; ++n) {
    BitVector bits = sliceBits(coded, static_cast<int>(n * perSymbol), perSymbol);
    if (params.interleaved) bits = interleave48(bits, bpsc);
    const float p = pilotPolarity(polarity);
    const float pilots[4] = {p, p, p, p};
    appendSymbol(frame, placeLegacySymbol(mapBits(bits, params.rate.modulation), pilots), fft,
                 false);
    polarity = polarity + 1 == 127 ? 0 : polarity + 1;
  }
}

}  // namespace

ComplexVector buildNonHtFrame(NonHtFrameParams params) {
  const int dbps = params.rate.dataBitsPerSymbol;
  if (dbps < 1 || params.rate.bitsPerSubcarrier < 1) return {};
  WlanFft fft;
  params.data.resize((params.data.size() + 7) / 8 * 8, 0);
  const long long length = static_cast<long long>(params.data.size() / 8);
  const long long payload = 8 * length + serviceBits + tailBits;
  const long long symbols = static_cast<long long>(std::ceil(double(payload) / dbps));
  ComplexVector frame;
  frame.reserve(static_cast<size_t>(preambleSamples + symbolSamples * symbols));
  const ComplexVector stf = legacyStf(fft), ltf = legacyLtf(fft);
  frame.insert(frame.end(), stf.begin(), stf.end());
  frame.insert(frame.end(), ltf.begin(), ltf.end());
  appendSignal(frame, params.rateCode, length, fft);
  const BitVector coded = ConvolutionalEncoder(params.rate.codeRate)
                              .encode(dataStream(params, symbols * dbps - payload));
  appendData(frame, params, coded, symbols, fft);
  return smoothSymbolJoins(frame, 64, 5, static_cast<int>(symbols), false, params.windowLength);
}

std::optional<BitVector> psduFromSource(const BitVector& source, int bytes) {
  const size_t count = bytes > 0 ? static_cast<size_t>(bytes) * 8 : 0;
  if (count > 0 && source.empty()) return std::nullopt;
  BitVector psdu;
  psdu.reserve(count);
  while (psdu.size() < count)
    psdu.insert(psdu.end(), source.begin(),
                source.begin() + static_cast<long>(std::min(source.size(), count - psdu.size())));
  return psdu;
}

ComplexVector buildNonHtSamples(const NonHtSettings& settings) {
  std::optional<BitVector> psdu = psduFromSource(settings.sourceBits, settings.bytes);
  if (!psdu) return {};
  NonHtFrameParams params = settings.frame;
  params.data = std::move(*psdu);
  ComplexVector samples = normaliseRms(buildNonHtFrame(std::move(params)), -6.0);
  appendIdleSamples(samples, settings.idleSeconds, settings.sampleRate);
  return samples;
}
