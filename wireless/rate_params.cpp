// SPDX-License-Identifier: MIT
// The record of a WLAN rate or MCS row, and the non-HT, HT and VHT rate tables.
#include "wireless/rate_params.h"

namespace {

const NonHtRateRow nonHtRows[nonHtRateCount] = {
    {"6 Mb/s", 11, {WlanBpsk, WlanRate1_2, 1, 1, 48, 4, 48, 24}},
    {"9 Mb/s", 15, {WlanBpsk, WlanRate3_4, 1, 1, 48, 4, 48, 36}},
    {"12 Mb/s", 10, {WlanQpsk, WlanRate1_2, 1, 2, 48, 4, 96, 48}},
    {"18 Mb/s", 14, {WlanQpsk, WlanRate3_4, 1, 2, 48, 4, 96, 72}},
    {"24 Mb/s", 9, {WlanQam16, WlanRate1_2, 1, 4, 48, 4, 192, 96}},
    {"36 Mb/s", 13, {WlanQam16, WlanRate3_4, 1, 4, 48, 4, 192, 144}},
    {"48 Mb/s", 8, {WlanQam64, WlanRate2_3, 1, 6, 48, 4, 288, 192}},
    {"54 Mb/s", 12, {WlanQam64, WlanRate3_4, 1, 6, 48, 4, 288, 216}},
};

// [mcs][0] is 20 MHz, [mcs][1] 40 MHz. Rows 0..7 are shared by HT and VHT. VHT MCS 9 keeps
// N_DBPS 346 at 20 MHz (416 x 5/6 rounded down), a row the mode list never reaches.
const RateParams mcsRows[vhtMcsCount][2] = {
    {{WlanBpsk, WlanRate1_2, 1, 1, 52, 4, 52, 26}, {WlanBpsk, WlanRate1_2, 1, 1, 108, 6, 108, 54}},
    {{WlanQpsk, WlanRate1_2, 1, 2, 52, 4, 104, 52}, {WlanQpsk, WlanRate1_2, 1, 2, 108, 6, 216, 108}},
    {{WlanQpsk, WlanRate3_4, 1, 2, 52, 4, 104, 78}, {WlanQpsk, WlanRate3_4, 1, 2, 108, 6, 216, 162}},
    {{WlanQam16, WlanRate1_2, 1, 4, 52, 4, 208, 104}, {WlanQam16, WlanRate1_2, 1, 4, 108, 6, 432, 216}},
    {{WlanQam16, WlanRate3_4, 1, 4, 52, 4, 208, 156}, {WlanQam16, WlanRate3_4, 1, 4, 108, 6, 432, 324}},
    {{WlanQam64, WlanRate2_3, 1, 6, 52, 4, 312, 208}, {WlanQam64, WlanRate2_3, 1, 6, 108, 6, 648, 432}},
    {{WlanQam64, WlanRate3_4, 1, 6, 52, 4, 312, 234}, {WlanQam64, WlanRate3_4, 1, 6, 108, 6, 648, 486}},
    {{WlanQam64, WlanRate5_6, 1, 6, 52, 4, 312, 260}, {WlanQam64, WlanRate5_6, 1, 6, 108, 6, 648, 540}},
    {{WlanQam256, WlanRate3_4, 1, 8, 52, 4, 416, 312}, {WlanQam256, WlanRate3_4, 1, 8, 108, 6, 864, 648}},
    {{WlanQam256, WlanRate5_6, 1, 8, 52, 4, 416, 346}, {WlanQam256, WlanRate5_6, 1, 8, 108, 6, 864, 780}},
};

const RateParams& mcsRow(int mcs, int bandwidth, int count) {
  if (mcs < 0 || mcs >= count) mcs = 0;
  return mcsRows[mcs][bandwidth == 1 ? 1 : 0];
}

}  // namespace

const char* modulationName(int modulation) {
  static const char* const names[] = {"BPSK", "QPSK", "QAM16", "QAM64", "QAM256"};
  return modulation >= 0 && modulation < 5 ? names[modulation] : "";
}

const char* codeRateName(int codeRate) {
  static const char* const names[] = {"1/2", "2/3", "3/4", "5/6"};
  return codeRate >= 0 && codeRate < 4 ? names[codeRate] : "";
}

const NonHtRateRow& nonHtRateRow(int index) {
  return nonHtRows[index >= 0 && index < nonHtRateCount ? index : 0];
}

const RateParams& nonHtRate(int rateCode) {
  for (const NonHtRateRow& row : nonHtRows)
    if (row.rateCode == (rateCode & 0xF)) return row.rate;
  return nonHtRows[0].rate;
}

const RateParams& htRate(int mcs, int bandwidth) {
  return mcsRow(mcs, bandwidth, htMcsCount);
}

const RateParams& vhtRate(int mcs, int bandwidth) {
  return mcsRow(mcs, bandwidth, vhtMcsCount);
}
