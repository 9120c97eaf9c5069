// SPDX-License-Identifier: MIT
// The DATA field's size and bit stream, the same for non-HT, HT and VHT frames.
#pragma once

#include "wireless/wlan_types.h"

#include <cstdint>

constexpr int wlanServiceBits = 16;
constexpr int wlanTailBits = 6;

// Pads `psdu` with zero bits to whole bytes and returns its length L in bytes.
long long padToWholeBytes(BitVector& psdu);

// N_SYM = ceiling((8 x L + 22) / N_DBPS) and the pad bits that fill the last symbol. Even an
// empty PSDU takes a symbol, for the service and tail bits.
struct DataFieldSize {
  long long symbols = 0;
  long long padBits = 0;
};
DataFieldSize dataFieldSize(long long lengthBytes, int dataBitsPerSymbol);

// SERVICE (16 bits of `service`, low bit first), the PSDU, then the pad and tail zeros, scrambled
// as one stream if asked. The scrambled tail is left as it is, so the trellis is not terminated.
BitVector dataFieldBits(uint32_t service, const BitVector& psdu, long long padBits, bool scrambled,
                        uint8_t scramblerInit);
