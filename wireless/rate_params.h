// SPDX-License-Identifier: MIT
// The record of a WLAN rate or MCS row, and the non-HT, HT and VHT rate tables.
#pragma once

#include <cstdint>

enum WlanModulation : int32_t { WlanBpsk = 0, WlanQpsk = 1, WlanQam16 = 2, WlanQam64 = 3, WlanQam256 = 4 };
enum WlanCodeRate : int32_t { WlanRate1_2 = 0, WlanRate2_3 = 1, WlanRate3_4 = 2, WlanRate5_6 = 3 };

// Eight 32-bit fields in this order; rows are copied by value into frame builds.
struct RateParams {
  int32_t modulation;          // WlanModulation
  int32_t codeRate;            // WlanCodeRate
  int32_t spatialStreams;      // always 1
  int32_t bitsPerSubcarrier;   // N_BPSC
  int32_t dataSubcarriers;     // N_SD
  int32_t pilotSubcarriers;    // N_SP
  int32_t codedBitsPerSymbol;  // N_CBPS
  int32_t dataBitsPerSymbol;   // N_DBPS
};

// "BPSK" .. "QAM256" and "1/2" .. "5/6"; any other value is the empty string.
const char* modulationName(int modulation);
const char* codeRateName(int codeRate);

// Non-HT rows in the order of the rate list ("6 Mb/s" first).
struct NonHtRateRow {
  const char* label;
  int rateCode;  // the SIGNAL RATE value
  RateParams rate;
};
constexpr int nonHtRateCount = 8;
const NonHtRateRow& nonHtRateRow(int index);  // index outside 0..7 gives row 0
// The row whose SIGNAL RATE is `rateCode` (low 4 bits); a code outside the table gives row 0.
const RateParams& nonHtRate(int rateCode);

// HT MCS 0..7 and VHT MCS 0..9; bandwidth 1 is the 40 MHz row (labels only), any other value
// the 20 MHz row. An MCS outside the table gives MCS 0, so a stray index cannot read past it.
constexpr int htMcsCount = 8;
constexpr int vhtMcsCount = 10;
const RateParams& htRate(int mcs, int bandwidth);
const RateParams& vhtRate(int mcs, int bandwidth);
