// SPDX-License-Identifier: MIT
// Headerless binary files of fixed-size complex samples, the common part of the raw readers.
#pragma once

#include "arb/iq_file_reader.h"

#include <QFile>

// A file of whole samples of sampleBytes bytes each; a trailing part of a sample is ignored.
// QFile keeps 64-bit positions, so files past 2 GB stream like any other.
class RawIQFile : public IQFileReader {
public:
  explicit RawIQFile(int sampleBytes) : sampleBytes(sampleBytes) {}

  // Refuses a second open; no header and no check of the content.
  bool open(const QString& path) override;
  bool isOpen() const override { return file.isOpen(); }
  int64_t sampleCount() const override { return isOpen() ? file.size() / sampleBytes : 0; }
  bool rewind() override { return isOpen() && file.seek(0); }
  int64_t samplesRemaining() const override;

protected:
  // count cut to what remains; 0 for a null destination, a closed file or count < 1.
  int64_t readableCount(const Sample* destination, int count) const;

  QFile file;
  const int sampleBytes;
};

// Reads count pairs of 16-bit integers into the upper half of destination and widens them in
// place to floats scaled by 2^-15, so that no buffer beyond the caller's is needed. Gives the
// bytes read.
int64_t readInt16PairsInPlace(QFile& file, Sample* destination, int64_t count);
