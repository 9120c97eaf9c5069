// SPDX-License-Identifier: MIT
// The single-user, single-stream VHT PPDU (802.11ac) on the same 20 MHz numerology as HT.
#include "wireless/wlan_vht/vht_frame_builder.h"

#include "wireless/convolutional_encoder.h"
#include "wireless/data_field.h"
#include "wireless/frame_shaping.h"
#include "wireless/ht_symbols.h"
#include "wireless/rate_params.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/training_fields.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_interleaver.h"
#include "wireless/wlan_mapper.h"

namespace {

constexpr int preambleSamples = 800;
constexpr int preambleSlots = 10;
constexpr double preambleMicroseconds = 40.0;

uint32_t vhtSigA1(const VhtFrameParams& p) {
  return (p.bandwidth == 1 ? 1u : 0u) | 1u << 2 | (static_cast<uint32_t>(p.groupId) & 0x3Fu) << 4 |
         (static_cast<uint32_t>(p.partialAid) & 0x1FFu) << 13 | 1u << 23;
}

// Bit 1 tells a receiver that the short-guard symbol count rounds to one more than it reads.
uint32_t vhtSigA2(const VhtFrameParams& p, long long symbols) {
  const bool disambiguate = p.shortGuard && symbols % 10 == 9;
  return (p.shortGuard ? 1u : 0u) | (disambiguate ? 1u << 1 : 0u) |
         (static_cast<uint32_t>(p.mcs) & 0xFu) << 4 | 1u << 9;
}

// 26 bits at rate 1/2 on the 52 HT data subcarriers, pilots 1, 1, 1, -1, always the long guard.
void appendSigB(ComplexVector& frame, uint32_t sigB, WlanFft& fft) {
  BitVector bits;
  bitsFromValue(bits, sigB, 26, true);
  const BitVector coded = ConvolutionalEncoder(WlanRate1_2).encode(bits);
  const Sample pilots[4] = {1.0f, 1.0f, 1.0f, -1.0f};
  appendSymbol(frame, placeHtSymbol(mapBpsk(interleave52(coded, 1)), pilots), fft, false);
}

}  // namespace

BitVector vhtSigABits(const VhtFrameParams& params, long long symbols) {
  return sigBitsWithCrc(vhtSigA1(params), vhtSigA2(params, symbols));
}

uint32_t vhtSigBValue(long long lengthBytes) {
  const long long words = (lengthBytes + 3) / 4;
  return (static_cast<uint32_t>(words) & 0x1FFFFu) | 0xE0000u;
}

uint8_t vhtServiceCrc(uint32_t sigB, int bandwidth) {
  if (bandwidth == 0) return crc8Signal(sigB & 0xFFFFFu, 20);
  if (bandwidth == 1) return crc8Signal(sigB & 0x1FFFFFu, 21);
  return crc8Signal(sigB & 0x7FFFFFu, 23);
}

ComplexVector buildVhtFrame(VhtFrameParams params) {
  const RateParams& rate = vhtRate(params.mcs, 0);
  WlanFft fft;
  const long long length = padToWholeBytes(params.data);
  const DataFieldSize size = dataFieldSize(length, rate.dataBitsPerSymbol);
  const double txTime = htTxTime(size.symbols, params.shortGuard, preambleMicroseconds);
  const uint32_t sigB = vhtSigBValue(length);
  ComplexVector frame;
  frame.reserve(static_cast<size_t>(preambleSamples + 80 * size.symbols));
  appendFields(frame, fft, {legacyStf, legacyLtf});
  appendMixedLegacySig(frame, spoofedLegacyLength(txTime), fft);
  appendSigSymbols(frame, vhtSigABits(params, size.symbols), false, true, fft);
  appendFields(frame, fft, {htStf, htLtf});
  appendSigB(frame, sigB, fft);
  const uint32_t service = static_cast<uint32_t>(vhtServiceCrc(sigB, params.bandwidth)) << 8;
  const BitVector coded = ConvolutionalEncoder(rate.codeRate)
                              .encode(dataFieldBits(service, params.data, size.padBits,
                                                    params.scrambled, params.scramblerInit));
  appendHtDataSymbols(frame, coded, rate, size.symbols, params.interleaved, params.shortGuard, fft);
  return smoothSymbolJoins(frame, 64, preambleSlots, static_cast<int>(size.symbols),
                           params.shortGuard, params.windowLength);
}

ComplexVector buildVhtSamples(const VhtSettings& settings) {
  return buildWlanSamples(settings, buildVhtFrame);
}
