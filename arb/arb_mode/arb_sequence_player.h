// SPDX-License-Identifier: MIT
// Plays a sequence: its expanded signal, retuning the device at each hop in stream order.
#pragma once

#include "arb/arb_builder.h"

class ArbSequence;
class ModeHost;

// Runs on the streaming thread. The whole signal is scaled as a play range is (no padding, no
// offset); with fewer than two hops it plays as one waveform, a single hop tuned before its
// first sample. With two or more, each pass sends the signal in 10 ms chunks and retunes at
// every hop between them, so the frequency follows the samples; a repeat starts on the last
// hop's frequency. A sequence past the size the editor saves plays nothing.
void playArbSequence(const ArbSequence& sequence, const ArbPlaySettings& settings, bool singleShot,
                     ModeHost& host);
