// SPDX-License-Identifier: MIT
// The single-stream HT mixed-format PPDU (802.11n) on one 20 MHz, 64-point numerology.
#pragma once

#include "wireless/wlan_frame_samples.h"
#include "wireless/wlan_types.h"

#include <cstdint>

// What one frame build takes, copied from the controls.
struct HtFrameParams {
  int32_t mcs = 7;
  int32_t bandwidth = 0;  // 1 only sets the 40 MHz bit in HT-SIG; the frame stays 20 MHz
  bool shortGuard = false;
  bool interleaved = true;  // DATA only
  bool scrambled = true;    // DATA only
  uint8_t scramblerInit = 93;
  int32_t windowLength = 16;
  BitVector data;  // the PSDU bits
};

// The 48 HT-SIG bits, SIG1 then SIG2, each low bit first, with the CRC over their first 34.
BitVector htSigBits(int mcs, int bandwidth, long long lengthBytes, bool shortGuard);

// The frame before its level is set: 720 + (80 or 72) x N_SYM samples with one HT-LTF. The
// preamble symbols keep the 16-sample guard with the short guard too; the data pilots are the
// single-stream rotation without the polarity sequence.
ComplexVector buildHtFrame(HtFrameParams params);

using HtSettings = WlanSettings<HtFrameParams>;
// The frame at -6 dB RMS followed by its idle zeros; no samples when the source is empty.
ComplexVector buildHtSamples(const HtSettings& settings);
