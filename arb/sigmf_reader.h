// SPDX-License-Identifier: MIT
// SigMF recordings: a JSON ".sigmf-meta" beside the samples in ".sigmf-data".
#pragma once

#include "arb/iq_file_reader.h"

#include <QString>

#include <memory>

// One-channel recordings of datatype "cf32_le" (float pairs) or "ci16_le" (16-bit pairs, full
// scale 2^15). open() takes either file of the pair; the samples are read through the raw
// reader of the datatype. A meta that can't be used leaves a text naming the key.
class SigMFReader : public IQFileReader {
public:
  SigMFReader();
  ~SigMFReader() override;

  bool open(const QString& path) override;
  bool isOpen() const override;
  int64_t sampleCount() const override;
  bool rewind() override;
  int64_t samplesRemaining() const override;
  int64_t read(Sample* destination, int count) override;

  const QString& errorText() const { return error; }
  // global/core:sample_rate, 0 when the meta has none.
  double sampleRate() const { return rate; }
  const QString& datatype() const { return type; }

private:
  bool fail(const QString& text);
  bool readMeta(const QString& metaPath);

  std::unique_ptr<IQFileReader> samples;
  QString error;
  QString type;
  double rate = 0.0;
};
