// SPDX-License-Identifier: MIT
// Headerless binary files of fixed-size complex samples, the common part of the raw readers.
#include "arb/raw_iq_file.h"

#include "dsp/vec_arith.h"

#include <algorithm>

bool RawIQFile::open(const QString& path) {
  if (file.isOpen()) return false;
  file.setFileName(path);
  return file.open(QIODevice::ReadOnly);
}

int64_t RawIQFile::samplesRemaining() const {
  if (!isOpen()) return 0;
  return std::max<int64_t>(0, file.size() - file.pos()) / sampleBytes;
}

int64_t RawIQFile::readableCount(const Sample* destination, int count) const {
  if (!destination || count < 1 || !isOpen()) return 0;
  return std::min<int64_t>(count, samplesRemaining());
}

int64_t readInt16PairsInPlace(QFile& file, Sample* destination, int64_t count) {
  if (count < 1) return 0;
  // The raw values fill exactly the last 4 count bytes. Value j sits at byte 4 count + 2 j and
  // its float goes to byte 4 j, so the upward pass never overwrites a value it has yet to read
  // (4 j + 4 <= 4 count + 2 (j + 1) for every j < 2 count). Starting at sample count / 2 instead
  // would, for an odd count, clobber the last value before its turn.
  float* floats = reinterpret_cast<float*>(destination);
  auto* raw = reinterpret_cast<int16_t*>(floats + count);
  const int64_t bytes = file.read(reinterpret_cast<char*>(raw), count * 4);
  if (bytes <= 0) return std::max<int64_t>(bytes, 0);
  // The kernel counts in int: widen in forward slices, which keeps the order safe.
  constexpr int64_t slice = int64_t{1} << 30;
  const int64_t values = bytes / 4 * 2;
  for (int64_t done = 0; done < values; done += slice) {
    const int n = static_cast<int>(std::min(slice, values - done));
    vecConvert16sTo32f(raw + done, floats + done, n, 15);
  }
  return bytes;
}
