// SPDX-License-Identifier: MIT
// The pieces that HT and VHT frames share: TXTIME and the L-SIG length, the rotated-BPSK SIG
// symbols and the data symbols on 52 subcarriers.
#include "wireless/ht_symbols.h"

#include "wireless/convolutional_encoder.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/wlan_bits.h"
#include "wireless/wlan_interleaver.h"
#include "wireless/wlan_mapper.h"

#include <cmath>

namespace {

// Passed to placeLegacySymbol, whose own sign table turns the last one back to +1.
const float mixedSigPilots[4] = {1.0f, 1.0f, 1.0f, -1.0f};
constexpr int legacyRateCode = 0xB;  // 6 Mb/s

}  // namespace

double htTxTime(long long symbols, bool shortGuard, double preambleMicroseconds) {
  const double n = static_cast<double>(symbols);
  if (!shortGuard) return 4.0 * n + preambleMicroseconds;
  return std::trunc(((n * 3.6) / 3.6) * 3.6 + preambleMicroseconds);
}

uint32_t spoofedLegacyLength(double txTime) {
  const double length = std::ceil((txTime - 0.0 - 20.0) * 0.25) * 3.0 - 3.0;
  return static_cast<uint32_t>(static_cast<long long>(length)) & 0xFFFu;
}

void appendMixedLegacySig(ComplexVector& frame, uint32_t legacyLength, WlanFft& fft) {
  const BitVector coded = ConvolutionalEncoder(WlanRate1_2)
                              .encode(signalFieldBits(legacySignalValue(legacyRateCode, legacyLength)));
  appendSymbol(frame, placeLegacySymbol(mapBpsk(interleave48(coded, 1)), mixedSigPilots), fft,
               false);
}

void appendSigSymbols(ComplexVector& frame, const BitVector& bits, bool rotateFirst,
                      bool rotateSecond, WlanFft& fft) {
  const BitVector coded = ConvolutionalEncoder(WlanRate1_2).encode(bits);
  const bool rotate[2] = {rotateFirst, rotateSecond};
  for (int half = 0; half < 2; ++half) {
    ComplexVector points = mapBpsk(interleave48(sliceBits(coded, 48 * half, 48), 1));
    if (rotate[half])
      for (Sample& p : points) p *= Sample(0.0f, 1.0f);
    appendSymbol(frame, placeLegacySymbol(points, mixedSigPilots), fft, false);
  }
}

BitVector sigBitsWithCrc(uint32_t first, uint32_t second) {
  first &= 0xFFFFFFu;
  second &= 0x3FFu;
  const uint64_t covered = static_cast<uint64_t>(first) | (static_cast<uint64_t>(second) << 24);
  second |= static_cast<uint32_t>(crc8Signal(covered, 34)) << 10;
  BitVector bits;
  bits.reserve(48);
  bitsFromValue(bits, first, 24, true);
  bitsFromValue(bits, second, 24, true);
  return bits;
}

void appendHtDataSymbols(ComplexVector& frame, const BitVector& coded, const RateParams& rate,
                         long long symbols, bool interleaved, bool shortGuard, WlanFft& fft) {
  const int bpsc = rate.bitsPerSubcarrier;
  const int perSymbol = rate.codedBitsPerSymbol;
  for (long long n = 0; n < symbols; ++n) {
    BitVector bits = sliceBits(coded, static_cast<int>(n * perSymbol), perSymbol);
    if (interleaved) bits = interleave52(bits, bpsc);
    const HtPilots pilots = htPilots(static_cast<int>(n));
    appendSymbol(frame, placeHtSymbol(mapBits(bits, rate.modulation), pilots.value), fft,
                 shortGuard);
  }
}
