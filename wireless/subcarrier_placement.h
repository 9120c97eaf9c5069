// SPDX-License-Identifier: MIT
// Placement of data and pilots on the 64 subcarriers, and the pilot values of each symbol.
#pragma once

#include "wireless/wlan_types.h"

// Every frequency table is indexed by k + 32 for subcarrier k = -32 .. 31; index 32 is DC.
constexpr int wlanFftSize = 64;
constexpr int wlanDcIndex = 32;

// 48 data points on k = -26 .. 26 without 0 and +-7, +-21, ascending k. Pilot i goes to
// k = -21, -7, 7, 21 as (+1, +1, +1, -1)[i] x pilots[i]: the caller passes the polarity only.
// Missing data or pilot entries leave their subcarriers at zero.
ComplexVector placeLegacySymbol(const ComplexVector& data, const float pilots[4]);
// 52 data points on k = -28 .. 28 without 0 and +-7, +-21; pilots copied as they are.
ComplexVector placeHtSymbol(const ComplexVector& data, const Sample pilots[4]);

struct HtPilots {
  Sample value[4];
};
// The single-stream rotation of (1, 1, 1, -1) by the symbol index. HT and VHT data symbols are
// deliberately not multiplied by the pilot polarity sequence.
HtPilots htPilots(int symbolIndex);

// p_0 .. p_126 of the non-HT pilots (1, 1, 1, 1, -1, -1, -1, 1, ...); the index wraps at 127.
float pilotPolarity(int index);
