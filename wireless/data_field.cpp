// SPDX-License-Identifier: MIT
// The DATA field's size and bit stream, the same for non-HT, HT and VHT frames.
#include "wireless/data_field.h"

#include "wireless/wlan_bits.h"

#include <algorithm>

long long padToWholeBytes(BitVector& psdu) {
  psdu.resize((psdu.size() + 7) / 8 * 8, 0);
  return static_cast<long long>(psdu.size() / 8);
}

DataFieldSize dataFieldSize(long long lengthBytes, int dataBitsPerSymbol) {
  if (dataBitsPerSymbol < 1) return {};
  const long long payload = 8 * lengthBytes + wlanServiceBits + wlanTailBits;
  const long long symbols = (payload + dataBitsPerSymbol - 1) / dataBitsPerSymbol;
  return {symbols, symbols * dataBitsPerSymbol - payload};
}

BitVector dataFieldBits(uint32_t service, const BitVector& psdu, long long padBits, bool scrambled,
                        uint8_t scramblerInit) {
  BitVector stream;
  stream.reserve(wlanServiceBits + psdu.size() + static_cast<size_t>(padBits + wlanTailBits));
  bitsFromValue(stream, service, wlanServiceBits, true);
  stream.insert(stream.end(), psdu.begin(), psdu.end());
  stream.resize(stream.size() + static_cast<size_t>(padBits + wlanTailBits), 0);
  return scrambled ? scrambleBits(scramblerInit, stream) : stream;
}
