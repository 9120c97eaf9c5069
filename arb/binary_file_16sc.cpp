// SPDX-License-Identifier: MIT
// Raw files of 16-bit signed I, Q pairs, full scale 2^15.
#include "arb/binary_file_16sc.h"

int64_t BinaryFile16sc::read(Sample* destination, int count) {
  const int64_t n = readableCount(destination, count);
  return readInt16PairsInPlace(file, destination, n) / 4;
}
