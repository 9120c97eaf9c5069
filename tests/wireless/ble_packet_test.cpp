// SPDX-License-Identifier: MIT
// Bluetooth LE packet bits: CRC-24 and whitening against the standard's circuits, the preamble
// and access address, and the PDU sources with their byte-count rule.
#include "wireless/ble/ble_packet_bits.h"

#include "digital/bit_sources.h"
#include "ble_air_bits.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Bits = std::vector<uint8_t>;

Bits bitsOfText(const char* text) {
  Bits bits;
  for (; *text; ++text) bits.push_back(*text == '1');
  return bits;
}

// ADV_NONCONN_IND, random address C0:FF:EE:12:34:56, flags 0x06.
const std::string advPdu = "4209563412EEFFC0020106";

BleSettings settingsOf(uint32_t address, int phy, bool crc, bool whitening, int channel) {
  BleSettings s;
  s.accessAddress = address;
  s.phy = phy;
  s.crcAttached = crc;
  s.whitening = whitening;
  s.channelIndex = channel;
  return s;
}

Bits tail(const Bits& bits, size_t from) { return Bits(bits.begin() + from, bits.end()); }

// CRCs worked out by hand over the register positions of the link layer's CRC circuit: init
// LSB in position 0, PDU bytes LSB first. The empty PDU leaves the initial value.
TEST(BlePacketBits, Crc24OfAdvertisingPdus) {
  const struct {
    std::string pdu;
    uint32_t init, crc;
  } rows[] = {
      {advPdu, 0x555555, 0x0EE56D},
      {advPdu, 0x55555555, 0x0EE56D},  // the eight-digit default: bits above 23 don't count
      {advPdu, 0x123456, 0xE5E452},
      {"", 0x555555, 0x555555},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.pdu + " " + std::to_string(row.init));
    EXPECT_EQ(bleCrc24(bitsOfHex(row.pdu), row.init), row.crc);
  }
}

// PDU and CRC whitened on the three advertising channels: air bytes worked out by hand from
// the 7-bit whitening circuit (x^7 + x^4 + 1, position 0 set, the channel in positions 1 to
// 6). The CRC goes out from its bit 23 down.
TEST(BlePacketBits, WhitenedAdvertisingPacketOnChannels37To39) {
  const struct {
    int channel;
    std::string air;
  } rows[] = {
      {37, "CFDB01952F4999707730173831C1"},
      {38, "94CC12144B301E4F19A4A932DCF8"},
      {39, "5D3E1C6B9718635AC3D7C33487EF"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.channel);
    const Bits packet =
        buildBlePacketBits(settingsOf(0x8E89BED6, 0, true, true, row.channel), bitsOfHex(advPdu));
    EXPECT_EQ(tail(packet, 40), bitsOfHex(row.air));
  }
  // Channel 37's sequence over more than two periods of the register.
  Bits zeros(42 * 8, 0);
  bleWhiten(zeros, 37);
  EXPECT_EQ(zeros, bitsOfHex("8DD257A13DA766B0753111489677F8E346E9ABD09E5333D8BA980824CB3BFC71"
                             "A3F45568CFA9196C5D4C"));
}

// Preamble by the address' low bit and the PHY, address low bit first; the switches.
TEST(BlePacketBits, PreambleAddressAndSwitches) {
  const Bits pdu = bitsOfHex(advPdu);
  const Bits advAddress = bitsOfHex("D6BE898E");
  Bits packet = buildBlePacketBits(settingsOf(0x8E89BED6, 0, true, true, 37), pdu);
  EXPECT_EQ(Bits(packet.begin(), packet.begin() + 8), bitsOfText("01010101"));
  EXPECT_EQ(Bits(packet.begin() + 8, packet.begin() + 40), advAddress);

  packet = buildBlePacketBits(settingsOf(0x5A3D2F1F, 1, true, true, 37), pdu);
  EXPECT_EQ(Bits(packet.begin(), packet.begin() + 16), bitsOfText("1010101010101010"));
  EXPECT_EQ(packet.size(), 16u + 32 + 88 + 24);
  packet = buildBlePacketBits(settingsOf(0x5A3D2F1E, 1, true, true, 37), pdu);
  EXPECT_EQ(Bits(packet.begin(), packet.begin() + 16), bitsOfText("0101010101010101"));
  EXPECT_TRUE(buildBlePacketBits(settingsOf(0x5A3D2F1E, 2, true, true, 37), pdu).empty());

  // No CRC: the whitening covers the PDU alone, from the sequence's start.
  packet = buildBlePacketBits(settingsOf(0x8E89BED6, 0, false, true, 37), pdu);
  Bits whitened = pdu;
  for (size_t i = 0; i < whitened.size(); ++i)
    whitened[i] ^= bitsOfHex("8DD257A13DA766B0753111")[i];
  EXPECT_EQ(tail(packet, 40), whitened);
  // No whitening: the channel does nothing, and the PDU and CRC go out plain.
  packet = buildBlePacketBits(settingsOf(0x8E89BED6, 0, true, false, 37), pdu);
  EXPECT_EQ(packet, buildBlePacketBits(settingsOf(0x8E89BED6, 0, true, false, 12), pdu));
  Bits plain = pdu;
  const Bits crc = bitsOfText("000011101110010101101101");  // 0x0EE56D from bit 23
  plain.insert(plain.end(), crc.begin(), crc.end());
  EXPECT_EQ(tail(packet, 40), plain);
}

// PN periods start from seed 255 and are appended while the bits number fewer than the bytes;
// the rest of bytes x 8 is zero. A custom pattern must be whole bytes.
TEST(BlePacketBits, PduSources) {
  const Bits pn7 = generatePnBits(7, 255), pn9 = generatePnBits(9, 255);
  const auto pnThenZeros = [](const Bits& period, int periods, size_t total) {
    Bits bits;
    for (int i = 0; i < periods; ++i) bits.insert(bits.end(), period.begin(), period.end());
    bits.resize(total, 0);
    return bits;
  };
  const struct {
    int source, bytes;
    QString pattern;
    std::optional<Bits> pdu;
  } rows[] = {
      {7, 32, "", pnThenZeros(pn7, 1, 256)},    // 127 PN bits, 129 zeros
      {7, 127, "", pnThenZeros(pn7, 1, 1016)},  // a period of 127 bits covers 127 "bytes"
      {7, 128, "", pnThenZeros(pn7, 2, 1024)},
      {9, 32, "", pnThenZeros(pn9, 1, 256)},
      {9, 0, "", Bits{}},
      {9, -1, "", std::nullopt},
      {9, INT32_MAX, "", std::nullopt},
      {-1, 5, "1010 0101x", bitsOfText("10100101")},
      {-1, 5, "", Bits{}},
      {-1, 5, "101", std::nullopt},
      {-1, 5, "101001011", std::nullopt},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.source) + " " + std::to_string(row.bytes) + " " +
                 row.pattern.toStdString());
    EXPECT_EQ(blePduBits(row.source, row.bytes, row.pattern), row.pdu);
  }
  // An empty PDU with its CRC: the initial value, from bit 23.
  const Bits packet = buildBlePacketBits(settingsOf(0x5A3D2F1E, 0, true, false, 37), Bits{});
  EXPECT_EQ(tail(packet, 40), bitsOfText("010101010101010101010101"));
}

}  // namespace
