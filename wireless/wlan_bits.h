// SPDX-License-Identifier: MIT
// Bit-level helpers of the WLAN fields: packing values, SIGNAL parity, SIG CRC, scrambling.
#pragma once

#include "wireless/wlan_types.h"

#include <cstdint>

// Appends `count` (0 to 32) bits of `value` to `bits`: bit 0 first when lowFirst is set,
// otherwise the highest of the counted bits first.
void bitsFromValue(BitVector& bits, uint32_t value, int count, bool lowFirst);

// The 24 bits of a SIGNAL value, bit 0 first. Bit 17 is inverted if the ones among all 24 are
// odd; callers put the parity there already, so this is only a second guard.
BitVector signalFieldBits(uint32_t value);

// A legacy SIGNAL value: RATE in bits 0..3, LENGTH (low 12 bits) in bits 5..16, and the even
// parity of those in bit 17.
uint32_t legacySignalValue(int rateCode, long long lengthBytes);

// CRC-8 (D^8 + D^2 + D + 1, register preset to ones) of the low `count` (0 to 64) bits of
// `value`, fed low bit first; complemented and bit-reversed, so storing it low bit first sends
// c7 first.
uint8_t crc8Signal(uint64_t value, int count);

// x^7 + x^4 + 1 scrambler started from `seed` (low 7 bits matter). The whole stream passes
// through, tail included: the tail is deliberately not cleared afterwards, so the encoder's
// trellis is not terminated.
BitVector scrambleBits(uint8_t seed, const BitVector& bits);

// `count` bits from `offset`, each masked to its low bit; positions past the end read as 0.
BitVector sliceBits(const BitVector& bits, int offset, int count);
