// SPDX-License-Identifier: MIT
// Gray-coded BPSK to QAM256 constellation mapping of coded bits, unit mean power.
#pragma once

#include "wireless/wlan_types.h"

// One point per group of N_BPSC bits (first bit most significant; first half I, second half
// Q); spare bits at the end are ignored. A modulation outside QPSK..QAM256 maps as BPSK.
ComplexVector mapBits(const BitVector& bits, int modulation);
// 1 gives +1, 0 gives -1, imaginary 0: the SIG fields' mapping.
ComplexVector mapBpsk(const BitVector& bits);
