// SPDX-License-Identifier: MIT
// Bluetooth LE packet bits against advertising packets worked out by hand from the standard's
// CRC and whitening circuits, and the PDU sources with their byte-count rule.
#include "wireless/ble/ble_packet_bits.h"

#include "ble_air_bits.h"
#include "digital/bit_sources.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Bits = std::vector<uint8_t>;

Bits bitsOfText(const std::string& text) {
  Bits bits;
  for (const char c : text) bits.push_back(c == '1');
  return bits;
}

// ADV_NONCONN_IND, random address C0:FF:EE:12:34:56, flags 0x06; bytes in air order.
const char* const adv = "4209563412EEFFC0020106";

// Whole packets: preamble, address low bit first, then PDU and CRC (from its bit 23) as they
// go on air. CRC register: init LSB in position 0, PDU bytes LSB first; whitening register
// x^7 + x^4 + 1, position 0 set and the channel in positions 1 to 6. The eight-digit CRC
// default counts by its low 24 bits; an empty PDU leaves the initial value as CRC; without
// whitening the channel does nothing.
TEST(BlePacketBits, AdvertisingPackets) {
  const struct {
    int phy;
    uint32_t address, crcInit;
    bool crc, whitening;
    int channel;
    const char *pdu, *preamble, *addressHex, *payloadHex, *crcBits;
  } rows[] = {
      {0, 0x8E89BED6, 0x555555, true, true, 37, adv, "01010101", "D6BE898E",
       "CFDB01952F4999707730173831C1", ""},
      {0, 0x8E89BED6, 0x555555, true, true, 38, adv, "01010101", "D6BE898E",
       "94CC12144B301E4F19A4A932DCF8", ""},
      {0, 0x8E89BED6, 0x55555555, true, true, 39, adv, "01010101", "D6BE898E",
       "5D3E1C6B9718635AC3D7C33487EF", ""},
      {0, 0x8E89BED6, 0x555555, false, true, 37, adv, "01010101", "D6BE898E",
       "CFDB01952F499970773017", ""},
      {1, 0x5A3D2F1F, 0x555555, true, false, 12, adv, "1010101010101010", "1F2F3D5A", adv,
       "000011101110010101101101"},
      {1, 0x5A3D2F1E, 0x123456, true, false, 37, adv, "0101010101010101", "1E2F3D5A", adv,
       "111001011110010001010010"},
      {0, 0x5A3D2F1E, 0x555555, true, false, 37, "", "01010101", "1E2F3D5A", "",
       "010101010101010101010101"},
      {2, 0x5A3D2F1E, 0x555555, true, true, 37, adv, "", "", "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.payloadHex);
    const BleSettings s{row.phy, row.channel, row.address, row.crc, row.crcInit, row.whitening};
    Bits air = bitsOfText(row.preamble);
    for (const Bits& part :
         {bitsOfHex(row.addressHex), bitsOfHex(row.payloadHex), bitsOfText(row.crcBits)})
      air.insert(air.end(), part.begin(), part.end());
    EXPECT_EQ(buildBlePacketBits(s, bitsOfHex(row.pdu)), air);
  }
  // Channel 37's sequence over more than two periods of the register.
  Bits zeros(42 * 8, 0);
  bleWhiten(zeros, 37);
  EXPECT_EQ(zeros, bitsOfHex("8DD257A13DA766B0753111489677F8E346E9ABD09E5333D8BA980824CB3BFC71"
                             "A3F45568CFA9196C5D4C"));
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
}

}  // namespace
