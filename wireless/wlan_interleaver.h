// SPDX-License-Identifier: MIT
// The two-step block interleavers of one OFDM symbol, for 48 and 52 data subcarriers.
#pragma once

#include "wireless/wlan_types.h"

// N = 48 x N_BPSC bits in 16 columns: SIGNAL, the SIG halves and non-HT data.
BitVector interleave48(const BitVector& bits, int bitsPerSubcarrier);
// N = 52 x N_BPSC bits in 13 columns: every HT and VHT data symbol.
BitVector interleave52(const BitVector& bits, int bitsPerSubcarrier);
