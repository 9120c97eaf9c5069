// SPDX-License-Identifier: MIT
// Text files of "I,Q" lines, read whole at open.
#pragma once

#include "arb/iq_file_reader.h"

#include <vector>

// One sample a line, two fields split at ","; no header. The reading ends at the first line
// that isn't two numbers, which fails the open (the samples before it stay), and after
// maxSamples samples, which doesn't. An empty file opens with no samples. The file is parsed a
// block at a time and closed again, so the reader holds only the samples.
//
// read() copies from the start of the samples whatever the position, and rewind() does
// nothing: the modes load CSV files whole and never stream them.
class CSVFileReader : public IQFileReader {
public:
  static constexpr int64_t maxSamples = 100000000;

  bool open(const QString& path) override;
  bool isOpen() const override { return opened; }
  int64_t sampleCount() const override { return static_cast<int64_t>(samples.size()); }
  bool rewind() override { return true; }
  int64_t samplesRemaining() const override { return sampleCount() - position; }
  int64_t read(Sample* destination, int count) override;

  const std::vector<Sample>& data() const { return samples; }
  // Why the last open stopped early: "Invalid sample count on line %d" for a line without
  // exactly two fields, "Invalid value on line %d" for a field that isn't a number, lines
  // counted from 1; empty after a whole read or an open that found no file.
  const QString& errorText() const { return error; }

private:
  bool opened = false;
  QString error;
  std::vector<Sample> samples;
  int64_t position = 0;
};

// A field of a CSV line as a float: white space around it, an optional sign, decimals with an
// optional exponent, "inf" and "nan"; false for anything else or a value beyond float's range.
// Locale-free, so a comma is never a decimal point.
bool parseCsvFloat(const char* begin, const char* end, float& value);
