// SPDX-License-Identifier: MIT
// The readers of complex sample files shared by the arb and streaming modes.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <cstdint>

// One file of interleaved I, Q samples, full scale 1.0, read front to back in blocks. Readers
// never show messages; a short read is the end of the data, not an error.
class IQFileReader {
public:
  virtual ~IQFileReader() = default;

  // Opens the file and reads what the format needs up front; true on success.
  virtual bool open(const QString& path) = 0;
  virtual bool isOpen() const = 0;
  // Complex samples in the file; 0 when not open (WAV: what the last open found).
  virtual int64_t sampleCount() const = 0;
  // Back to the first sample.
  virtual bool rewind() = 0;
  virtual int64_t samplesRemaining() const = 0;
  // Reads at most `count` samples, never more than remain, and gives how many it read.
  virtual int64_t read(Sample* destination, int count) = 0;
};
