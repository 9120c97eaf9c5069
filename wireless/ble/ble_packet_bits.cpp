// SPDX-License-Identifier: MIT
// Bluetooth LE packet bits: the PDU from its source, CRC-24, whitening and the air-order packet.
#include "wireless/ble/ble_packet_bits.h"

#include "digital/bit_sources.h"

namespace {

// The PN sources start from this seed whatever "PDU Data Seed" says.
constexpr uint32_t pnSeed = 255;
constexpr uint32_t crcFeedback = 0x32D;  // the polynomial's lower terms, before the shift

std::optional<std::vector<uint8_t>> customPduBits(const QString& pattern) {
  std::vector<uint8_t> bits = bitsFromText(pattern);
  if (bits.size() % 8 != 0 || static_cast<int64_t>(bits.size()) > bleMaxPduBits)
    return std::nullopt;
  return bits;
}

void appendBits(std::vector<uint8_t>& bits, uint32_t word, int count, bool lowFirst) {
  for (int i = 0; i < count; ++i)
    bits.push_back(static_cast<uint8_t>((word >> (lowFirst ? i : count - 1 - i)) & 1));
}

}  // namespace

// "Bytes" is compared to a count of bits while periods are appended: a period longer than the
// count in bytes is used once and the rest of the PDU stays zero.
std::optional<std::vector<uint8_t>> blePduBits(int source, int bytes, const QString& pattern) {
  if (source == blePduCustom) return customPduBits(pattern);
  if (bytes < 0 || int64_t{bytes} * 8 > bleMaxPduBits) return std::nullopt;
  const std::vector<uint8_t> period = generatePnBits(source, pnSeed);
  if (period.empty()) return std::nullopt;
  std::vector<uint8_t> bits;
  while (static_cast<int64_t>(bits.size()) < bytes)
    bits.insert(bits.end(), period.begin(), period.end());
  bits.resize(static_cast<size_t>(bytes) * 8, 0);
  return bits;
}

uint32_t bleCrc24(const std::vector<uint8_t>& bits, uint32_t crcInit) {
  uint32_t reg = crcInit & 0xFFFFFF;
  for (const uint8_t bit : bits) {
    const uint32_t f = ((reg >> 23) ^ bit) & 1;
    if (f) reg ^= crcFeedback;
    reg = ((reg << 1) | f) & 0xFFFFFF;
  }
  return reg;
}

void bleWhiten(std::vector<uint8_t>& bits, int channelIndex) {
  uint32_t reg = (static_cast<uint32_t>(channelIndex) & 63) | 64;
  for (uint8_t& bit : bits) {
    const uint32_t b = reg & 1;
    bit = static_cast<uint8_t>(bit ^ b);
    reg = ((reg >> 1) | (b << 6)) ^ (b * 4);
  }
}

std::vector<uint8_t> buildBlePacketBits(const BleSettings& settings,
                                        const std::vector<uint8_t>& pduBits) {
  if (settings.phy != 0 && settings.phy != 1) return {};
  const int preambleBits = settings.phy == 0 ? 8 : 16;
  // Air order: the first bit of the preamble differs from the access address' first bit.
  const uint32_t preamble = (settings.accessAddress & 1) ? 0x5555 : 0xAAAA;
  std::vector<uint8_t> packet;
  packet.reserve(static_cast<size_t>(preambleBits) + 32 + pduBits.size() + 24);
  appendBits(packet, preamble, preambleBits, true);
  appendBits(packet, settings.accessAddress, 32, true);
  std::vector<uint8_t> payload = pduBits;
  if (settings.crcAttached) appendBits(payload, bleCrc24(pduBits, settings.crcInit), 24, false);
  if (settings.whitening) bleWhiten(payload, settings.channelIndex);
  packet.insert(packet.end(), payload.begin(), payload.end());
  return packet;
}
