// SPDX-License-Identifier: MIT
// Bluetooth LE packet bits: the PDU from its source, CRC-24, whitening and the air-order packet.
#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

// What the Bluetooth LE view reports to the build.
struct BleSettings {
  int32_t phy = 0;  // 0 "LE 1M", 1 "LE 2M"
  int32_t channelIndex = 37;
  uint32_t accessAddress = 0x5A3D2F1E;
  bool crcAttached = true;
  uint32_t crcInit = 0x55555555;  // only the low 24 bits count
  bool whitening = true;
};

// The "PDU Data" entry of the custom pattern; the others are PN orders.
constexpr int blePduCustom = -1;

// The longest PDU built, in bits: at the most samples a symbol (16) its samples still fit the
// int counts of the submit path and the channel filter.
constexpr int64_t bleMaxPduBits = INT32_MAX / 16;

// The PDU bits of a source. A PN order gives periods of generatePnBits(order, 255) (the seed is
// fixed), appended while the count of bits is below `bytes` (bytes, not bits), then cut or
// padded with zeros to bytes x 8. The custom pattern gives its '0' and '1' characters, with
// `bytes` ignored. No PDU for a pattern that isn't a whole number of bytes, a negative or too
// large byte count, or an order without a PN period.
std::optional<std::vector<uint8_t>> blePduBits(int source, int bytes, const QString& pattern);

// CRC-24 of the bits (x^24 + x^10 + x^9 + x^6 + x^4 + x^3 + x + 1), the register starting at
// the low 24 bits of crcInit; bit 23 of the result goes on air first.
uint32_t bleCrc24(const std::vector<uint8_t>& bits, uint32_t crcInit);

// XORs the bits in place with the whitening sequence of the 7-bit register x^7 + x^4 + 1 that
// starts at (channelIndex AND 63) OR 64.
void bleWhiten(std::vector<uint8_t>& bits, int channelIndex);

// Preamble (by the access address' low bit, one byte for LE 1M, two for LE 2M), access
// address low bit first, then the PDU and its CRC, whitened together when asked. Empty for a
// phy other than 0 and 1.
std::vector<uint8_t> buildBlePacketBits(const BleSettings& settings,
                                        const std::vector<uint8_t>& pduBits);
