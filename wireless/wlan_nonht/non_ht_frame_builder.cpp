// SPDX-License-Identifier: MIT
// The non-HT (802.11a) PPDU: L-STF, L-LTF, SIGNAL and DATA, and the finished mode samples.
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

#include "wireless/convolutional_encoder.h"
#include "wireless/data_field.h"
#include "wireless/frame_shaping.h"
#include "wireless/ofdm_symbol.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/training_fields.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_interleaver.h"
#include "wireless/wlan_mapper.h"

namespace {

constexpr int preambleSamples = 400;  // L-STF, L-LTF and SIGNAL
constexpr int symbolSamples = 80;

void appendSignal(ComplexVector& frame, int rateCode, long long lengthBytes, WlanFft& fft) {
  const BitVector coded = ConvolutionalEncoder(WlanRate1_2)
                              .encode(signalFieldBits(legacySignalValue(rateCode, lengthBytes)));
  const float pilots[4] = {1.0f, 1.0f, 1.0f, 1.0f};
  appendSymbol(frame, placeLegacySymbol(mapBpsk(interleave48(coded, 1)), pilots), fft, false);
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
  if (params.rate.dataBitsPerSymbol < 1 || params.rate.bitsPerSubcarrier < 1) return {};
  WlanFft fft;
  const long long length = padToWholeBytes(params.data);
  const DataFieldSize size = dataFieldSize(length, params.rate.dataBitsPerSymbol);
  ComplexVector frame;
  frame.reserve(static_cast<size_t>(preambleSamples + symbolSamples * size.symbols));
  appendFields(frame, fft, {legacyStf, legacyLtf});
  appendSignal(frame, params.rateCode, length, fft);
  const BitVector coded =
      ConvolutionalEncoder(params.rate.codeRate)
          .encode(dataFieldBits(0, params.data, size.padBits, params.scrambled, params.scramblerInit));
  appendData(frame, params, coded, size.symbols, fft);
  return smoothSymbolJoins(frame, 64, 5, static_cast<int>(size.symbols), false,
                           params.windowLength);
}

ComplexVector buildNonHtSamples(const NonHtSettings& settings) {
  return buildWlanSamples(settings, buildNonHtFrame);
}
