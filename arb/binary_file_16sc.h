// SPDX-License-Identifier: MIT
// Raw files of 16-bit signed I, Q pairs, full scale 2^15.
#pragma once

#include "arb/raw_iq_file.h"

// Four bytes a sample: I at offset 0, Q at offset 2; -32768 reads as -1.0.
class BinaryFile16sc : public RawIQFile {
public:
  BinaryFile16sc() : RawIQFile(4) {}
  // Widens in the destination itself: the streaming loop reads a block every few tens of
  // milliseconds and must not allocate.
  int64_t read(Sample* destination, int count) override;
};
