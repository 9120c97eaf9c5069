// SPDX-License-Identifier: MIT
// Bit sources of the modulated modes: PN sequences of a shift register and the user's patterns.
#pragma once

#include <QString>

#include <cstdint>
#include <vector>

// The largest order generatePnBits accepts. The table's largest is 23 (8,388,607 bits), and no
// caller asks for more; one order above it still costs only 16 MiB, while an unchecked order
// would overflow 2^order or exhaust memory.
constexpr int maxPnOrder = 24;

// One period, 2^order - 1 bytes of 0 or 1, of the Fibonacci register with the tap mask of
// `order` (3: 0x6, 5: 0x14, 7: 0x60, 9: 0x110, 15: 0x6000, 21: 0x140000, 23: 0x420000; any
// other: 0x60). The 32-bit register starts at `seed`, is never masked to the order, and each
// step emits the fed-back bit. A seed of 0 gives zeros. An order below 1 or above maxPnOrder
// gives an empty vector. Pure; safe on the streaming thread.
std::vector<uint8_t> generatePnBits(int order, uint32_t seed);

// The bits of a user pattern: each "0" or "1" among the Latin-1 characters of `text`, in order;
// every other character is skipped.
std::vector<uint8_t> bitsFromText(const QString& text);

// The editor's own register (not generatePnBits'), as text of "0" and "1": order 9 feeds back
// bits 3 and 8, order 15 bits 13 and 14, order 23 bits 17 and 22; each step shifts the register
// up and appends its new lowest bit, until the register holds the seed again. A seed of 0 gives
// "0"; another order gives the seed's lowest bit alone. Bits of `seed` above the register are
// dropped first: they shift out at the first step and leave the characters unchanged, but they
// could never be met again, so the loop would not end. The step is a bijection of the register's
// 2^order states, so the loop ends within 2^order - 1 steps.
QString pnTextFromEditor(int order, uint32_t seed);
