// SPDX-License-Identifier: MIT
// The non-HT (802.11a) PPDU: L-STF, L-LTF, SIGNAL and DATA, and the finished mode samples.
#pragma once

#include "wireless/rate_params.h"
#include "wireless/wlan_frame_samples.h"
#include "wireless/wlan_types.h"

#include <cstdint>

// What one frame build takes, copied from the controls.
struct NonHtFrameParams {
  int32_t rateCode = 12;  // the SIGNAL RATE value, low 4 bits used
  RateParams rate = nonHtRate(12);
  bool interleaved = true;  // DATA only; SIGNAL is always interleaved
  bool scrambled = true;    // DATA only; SIGNAL is never scrambled
  uint8_t scramblerInit = 93;
  int32_t windowLength = 16;
  BitVector data;  // the PSDU bits
};

// The frame before its level is set: 400 + 80 x N_SYM samples. The scrambled tail is left as
// the scrambler made it, the data pilots follow the polarity sequence from p_1, and every join
// is blended, the preamble's included. A rate record with no data bits a symbol gives nothing.
ComplexVector buildNonHtFrame(NonHtFrameParams params);

using NonHtSettings = WlanSettings<NonHtFrameParams>;

// The frame at -6 dB RMS followed by its idle zeros; no samples when the source is empty.
ComplexVector buildNonHtSamples(const NonHtSettings& settings);
