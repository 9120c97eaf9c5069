// SPDX-License-Identifier: MIT
// The two-step block interleavers of one OFDM symbol, for 48 and 52 data subcarriers.
#include "wireless/wlan_interleaver.h"

#include <algorithm>

namespace {

// First step spreads adjacent coded bits over non-adjacent subcarriers; the second alternates
// them between the more and less reliable bits of a constellation point. Positions that fall
// outside a short input are dropped rather than written past its end.
BitVector interleave(const BitVector& bits, int bitsPerSubcarrier, int subcarriers, int columns) {
  const long long n = static_cast<long long>(bits.size());
  const long long total = static_cast<long long>(subcarriers) * std::max(bitsPerSubcarrier, 1);
  const long long s = std::max(bitsPerSubcarrier / 2, 1);
  BitVector first(bits.size(), 0), out(bits.size(), 0);
  for (long long k = 0; k < n; ++k) {
    const long long i = (k % columns) * (total / columns) + k / columns;
    if (i < n) first[i] = bits[k];
  }
  for (long long i = 0; i < n; ++i) {
    const long long j = s * (i / s) + (i + total - (columns * i) / total) % s;
    if (j < n) out[j] = first[i];
  }
  return out;
}

}  // namespace

BitVector interleave48(const BitVector& bits, int bitsPerSubcarrier) {
  return interleave(bits, bitsPerSubcarrier, 48, 16);
}

BitVector interleave52(const BitVector& bits, int bitsPerSubcarrier) {
  return interleave(bits, bitsPerSubcarrier, 52, 13);
}
