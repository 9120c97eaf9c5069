// SPDX-License-Identifier: MIT
// Raw files of 32-bit float I, Q pairs, taken as they stand.
#include "arb/binary_file_32fc.h"

#include <algorithm>

int64_t BinaryFile32fc::read(Sample* destination, int count) {
  const int64_t n = readableCount(destination, count);
  if (n < 1) return 0;
  const int64_t bytes = file.read(reinterpret_cast<char*>(destination), n * 8);
  return std::max<int64_t>(bytes, 0) / 8;
}
