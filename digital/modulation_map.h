// SPDX-License-Identifier: MIT
// Linear modulations: the built-in constellation maps, their bits a symbol, and the symbols of
// a bit source.
#pragma once

#include "dsp/sample.h"

#include <cstdint>
#include <vector>

// Item data of "Modulation Type" and the integer in presets. 13 has a map but no item; 15 to 18
// are frequency shift keying and have no map; 19 takes the user's map.
enum DigitalMod : int {
  DigitalModBPSK = 0,
  DigitalModDBPSK = 1,
  DigitalModQPSK = 2,
  DigitalModDQPSK = 3,
  DigitalModOQPSK = 4,
  DigitalModPi4DQPSK = 5,
  DigitalMod8PSK = 6,
  DigitalModD8PSK = 7,
  DigitalMod16PSK = 8,
  DigitalModQAM16 = 9,
  DigitalModQAM64 = 10,
  DigitalModQAM256 = 11,
  DigitalModQAM1024 = 12,
  DigitalModQAM4096 = 13,
  DigitalMod2ASK = 14,
  DigitalMod2FSK = 15,
  DigitalMod4FSK = 16,
  DigitalMod8FSK = 17,
  DigitalMod16FSK = 18,
  DigitalModCustom = 19,
};

// A linear modulation: the points by symbol value; when differential, each symbol moves the
// state by its offset and the state's point is played; offsetQ delays one rail by half a symbol.
struct ModulationMap {
  std::vector<Sample> states;
  bool differential = false;
  std::vector<int32_t> diffStates;
  bool offsetQ = false;
};

// The item text of `mod` in the combo boxes ("QPSK", "8PSK", ...); null for 13, which has a
// map but no item, and for unknown values.
const char* digitalModText(int mod);

// The built-in map of `mod`, before scaling; an empty map for the FSK values, 19 and unknown ones.
ModulationMap defaultModulationMap(int mod);

// log2 of the state count (of the offsets' count when differential) when that is a power of two
// of at least 2; 0 for any other count, which no dialog lets in but a preset can bring.
int bitsPerSymbol(const ModulationMap& map);

// Scales the points so that their RMS is `iqScaling`; points of no power stay as they are.
void normalizeConstellation(std::vector<Sample>& points, float iqScaling);

// Symbols of `bitsPerSymbol` bits each, the first bit in the least significant place; a
// remainder of bits is dropped. Nothing for 0 bits a symbol.
std::vector<uint32_t> symbolsFromBits(const std::vector<uint8_t>& bits, int bitsPerSymbol);
