// SPDX-License-Identifier: MIT
// The pieces that HT and VHT frames share: TXTIME and the L-SIG length, the rotated-BPSK SIG
// symbols and the data symbols on 52 subcarriers.
#pragma once

#include "wireless/ofdm_symbol.h"
#include "wireless/rate_params.h"
#include "wireless/wlan_types.h"

#include <cstdint>

// TXTIME in microseconds after the legacy preamble: 4 x N_SYM + `preambleMicroseconds` with the
// long guard; with the short guard truncate(((N_SYM x 3.6) / 3.6) x 3.6 + preamble), in exactly
// those double steps.
double htTxTime(long long symbols, bool shortGuard, double preambleMicroseconds);

// The L-SIG LENGTH that spoofs `txTime`: ceiling((TXTIME - 0.0 - 20.0) x 0.25) x 3 - 3, to 12 bits.
uint32_t spoofedLegacyLength(double txTime);

// L-SIG at 6 Mb/s announcing `legacyLength`. Its four pilots are all +1 on air, unlike the
// non-HT SIGNAL's last one: the mixed-format frames keep that on purpose.
void appendMixedLegacySig(ComplexVector& frame, uint32_t legacyLength, WlanFft& fft);

// Two SIG symbols from 48 bits (sent in order): rate-1/2 code, two interleaved halves in BPSK,
// each multiplied by j when its flag is set, placed with the L-SIG pilots, which stay unrotated.
void appendSigSymbols(ComplexVector& frame, const BitVector& bits, bool rotateFirst,
                      bool rotateSecond, WlanFft& fft);

// The 48 SIG bits of two 24-bit halves, low bit first, with crc8Signal of the first half and the
// second's bits 0..9 put in the second half's bits 10..17 (its tail bits 18..23 stay 0).
BitVector sigBitsWithCrc(uint32_t first, uint32_t second);

// N_SYM data symbols from the coded bits: 52 x N_BPSC bits a symbol, interleaved if asked,
// mapped, with the single-stream pilots of symbol n, and a guard of 16 or 8 samples.
void appendHtDataSymbols(ComplexVector& frame, const BitVector& coded, const RateParams& rate,
                         long long symbols, bool interleaved, bool shortGuard, WlanFft& fft);
