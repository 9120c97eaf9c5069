// SPDX-License-Identifier: MIT
// The fixed GFSK burst that mode index 12 plays: 342 bits at 1 Msym/s, ramped, then silence.
#pragma once

#include "modes/mode_types.h"

// Samples in one repetition of the burst, its ramped packet and the silence after it.
constexpr int gfskBurstLength = 2500;

// 2500 samples at 4e6 a second, levelOffsetDb 0: a PN sync word framed by alternating bits, a
// header of nine 0-1 pairs each sent three times, and PN payload, all from one PN register.
Waveform buildGfskBurst();
