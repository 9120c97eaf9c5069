// SPDX-License-Identifier: MIT
// The single-stream HT mixed-format PPDU (802.11n) on one 20 MHz, 64-point numerology.
#include "wireless/wlan_ht/ht_frame_builder.h"

#include "wireless/convolutional_encoder.h"
#include "wireless/data_field.h"
#include "wireless/frame_shaping.h"
#include "wireless/ht_symbols.h"
#include "wireless/rate_params.h"
#include "wireless/training_fields.h"

namespace {

constexpr int preambleSamples = 720;
constexpr int preambleSlots = 9;
constexpr double preambleMicroseconds = 36.0;

// Smoothing, Not Sounding and the reserved one, then short GI in bit 7; the rest are 0.
uint32_t htSig2(bool shortGuard) {
  return 0x7u | (shortGuard ? 1u << 7 : 0u);
}

uint32_t htSig1(int mcs, int bandwidth, long long lengthBytes) {
  return (static_cast<uint32_t>(mcs) & 0x7Fu) | (bandwidth == 1 ? 1u << 7 : 0u) |
         (static_cast<uint32_t>(lengthBytes & 0xFFFF) << 8);
}

}  // namespace

BitVector htSigBits(int mcs, int bandwidth, long long lengthBytes, bool shortGuard) {
  return sigBitsWithCrc(htSig1(mcs, bandwidth, lengthBytes), htSig2(shortGuard));
}

ComplexVector buildHtFrame(HtFrameParams params) {
  const RateParams& rate = htRate(params.mcs, 0);
  WlanFft fft;
  const long long length = padToWholeBytes(params.data);
  const DataFieldSize size = dataFieldSize(length, rate.dataBitsPerSymbol);
  const double txTime = htTxTime(size.symbols, params.shortGuard, preambleMicroseconds);
  ComplexVector frame;
  frame.reserve(static_cast<size_t>(preambleSamples + 80 * size.symbols));
  appendFields(frame, fft, {legacyStf, legacyLtf});
  appendMixedLegacySig(frame, spoofedLegacyLength(txTime), fft);
  appendSigSymbols(frame, htSigBits(params.mcs, params.bandwidth, length, params.shortGuard),
                   true, true, fft);
  appendFields(frame, fft, {htStf, htLtf});
  const BitVector coded =
      ConvolutionalEncoder(rate.codeRate)
          .encode(dataFieldBits(0, params.data, size.padBits, params.scrambled, params.scramblerInit));
  appendHtDataSymbols(frame, coded, rate, size.symbols, params.interleaved, params.shortGuard, fft);
  return smoothSymbolJoins(frame, 64, preambleSlots, static_cast<int>(size.symbols),
                           params.shortGuard, params.windowLength);
}

ComplexVector buildHtSamples(const HtSettings& settings) {
  return buildWlanSamples(settings, buildHtFrame);
}
