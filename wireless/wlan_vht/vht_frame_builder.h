// SPDX-License-Identifier: MIT
// The single-user, single-stream VHT PPDU (802.11ac) on the same 20 MHz numerology as HT.
#pragma once

#include "wireless/wlan_frame_samples.h"
#include "wireless/wlan_ht/ht_frame_builder.h"

#include <cstdint>

struct VhtFrameParams : HtFrameParams {
  VhtFrameParams() { mcs = 8; }
  int32_t groupId = 63;      // low 6 bits used
  int32_t partialAid = 275;  // low 9 bits used
};

// The 48 VHT-SIG-A bits, A1 then A2, each low bit first, with the CRC over their first 34.
BitVector vhtSigABits(const VhtFrameParams& params, long long symbols);
// VHT-SIG-B's value for an L-byte PSDU: ceiling(L / 4) in 17 bits and the reserved ones in
// bits 17..19.
uint32_t vhtSigBValue(long long lengthBytes);
// The CRC that SERVICE carries in its bits 8..15: over 20 bits of SIG-B at `bandwidth` 0, 21 at
// 1 and 23 otherwise.
uint8_t vhtServiceCrc(uint32_t sigB, int bandwidth);

// The frame before its level is set: 800 + (80 or 72) x N_SYM samples. The PSDU is the raw
// data: no MPDU framing, padding delimiter or A-MPDU.
ComplexVector buildVhtFrame(VhtFrameParams params);

using VhtSettings = WlanSettings<VhtFrameParams>;
// The frame at -6 dB RMS followed by its idle zeros; no samples when the source is empty.
ComplexVector buildVhtSamples(const VhtSettings& settings);
