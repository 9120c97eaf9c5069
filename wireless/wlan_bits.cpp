// SPDX-License-Identifier: MIT
// Bit-level helpers of the WLAN fields: packing values, SIGNAL parity, SIG CRC, scrambling.
#include "wireless/wlan_bits.h"

#include <algorithm>

namespace {

int parity(unsigned v) {
  return __builtin_parity(v);
}

}  // namespace

void bitsFromValue(BitVector& bits, uint32_t value, int count, bool lowFirst) {
  count = std::clamp(count, 0, 32);
  for (int i = 0; i < count; ++i) {
    const int bit = lowFirst ? i : count - 1 - i;
    bits.push_back(static_cast<uint8_t>((value >> bit) & 1u));
  }
}

BitVector signalFieldBits(uint32_t value) {
  BitVector bits;
  bitsFromValue(bits, value, 24, true);
  const int ones = static_cast<int>(std::count(bits.begin(), bits.end(), 1));
  if (ones % 2) bits[17] ^= 1;
  return bits;
}

uint32_t legacySignalValue(int rateCode, long long lengthBytes) {
  uint32_t value = static_cast<uint32_t>(rateCode & 0xF);
  value |= static_cast<uint32_t>(lengthBytes & 0xFFF) << 5;
  value |= static_cast<uint32_t>(parity(value)) << 17;
  return value;
}

uint8_t crc8Signal(uint64_t value, int count) {
  count = std::clamp(count, 0, 64);
  unsigned reg = 0xFF;
  for (int i = 0; i < count; ++i) {
    const unsigned diff = static_cast<unsigned>((value >> i) & 1u) ^ ((reg >> 7) & 1u);
    if (diff) reg ^= 0x03;
    reg = ((reg << 1) | diff) & 0xFF;
  }
  reg = ~reg & 0xFF;
  unsigned reversed = 0;
  for (int i = 0; i < 8; ++i) reversed |= ((reg >> i) & 1u) << (7 - i);
  return static_cast<uint8_t>(reversed);
}

BitVector scrambleBits(uint8_t seed, const BitVector& bits) {
  BitVector out(bits.size());
  unsigned reg = seed;
  for (size_t i = 0; i < bits.size(); ++i) {
    const unsigned feedback = static_cast<unsigned>(parity(reg & 0x48));
    out[i] = static_cast<uint8_t>((bits[i] ^ feedback) & 1u);
    reg = ((reg << 1) & 0xFF) | feedback;
  }
  return out;
}

BitVector sliceBits(const BitVector& bits, int offset, int count) {
  BitVector out(static_cast<size_t>(std::max(count, 0)), 0);
  for (size_t i = 0; i < out.size(); ++i) {
    const long long at = static_cast<long long>(offset) + static_cast<long long>(i);
    if (at >= 0 && at < static_cast<long long>(bits.size())) out[i] = bits[at] & 1u;
  }
  return out;
}
