// SPDX-License-Identifier: MIT
// Raw files of 32-bit float I, Q pairs, taken as they stand.
#pragma once

#include "arb/raw_iq_file.h"

// Eight bytes a sample: float I at offset 0, float Q at offset 4.
class BinaryFile32fc : public RawIQFile {
public:
  BinaryFile32fc() : RawIQFile(8) {}
  int64_t read(Sample* destination, int count) override;
};
