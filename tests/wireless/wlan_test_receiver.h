// SPDX-License-Identifier: MIT
// A noiseless single-stream receiver of the non-HT, HT and VHT frames, for tests that read back
// what was played: it knows the air format alone and shares no code with the transmit side.
#pragma once

#include "dsp/sample.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

enum class WlanFrameKind { NonHt, Ht, Vht };

// What the air says about one frame and the PSDU it carries. Fields the frame kind has no
// signalling for stay at -1.
struct WlanRxFrame {
  std::string error;          // empty when every check passed and the PSDU was decoded
  long long start = -1;       // first sample of the L-STF in the span
  int rateCode = -1;          // SIGNAL / L-SIG RATE as a 4-bit value, R1 in bit 0
  int legacyLength = -1;      // SIGNAL / L-SIG LENGTH, bytes
  int mcs = -1;               // HT-SIG or VHT-SIG-A
  bool shortGuard = false;    // HT-SIG or VHT-SIG-A
  int sigBWords = -1;         // VHT-SIG-B length in 4-byte words
  int symbols = 0;            // DATA symbols decoded
  int scramblerSeed = -1;     // the 7-bit state recovered from SERVICE, x7 in bit 6
  std::vector<uint8_t> psdu;  // one byte a bit, first on air first
};

// Finds the first frame of `kind` in `samples` by its L-LTF and decodes it from its own
// signalling. Any failed check (parity, CRC, pilots, BPSK axis, tail, length) ends the decode
// with `error` set.
WlanRxFrame decodeWlanFrame(const Sample* samples, size_t count, WlanFrameKind kind);
