// SPDX-License-Identifier: MIT
// Two-channel WAV files, 16-bit PCM or 32-bit IEEE float; left is I, right is Q.
#pragma once

#include "arb/iq_file_reader.h"

#include <QFile>

// open() checks the header field by field and keeps the first fault's text for the caller.
// A closed reader reads -1 and has -1 samples remaining; sampleCount() keeps what the last
// successful open found.
class WavReader : public IQFileReader {
public:
  enum AudioFormat : uint16_t { Pcm = 1, IeeeFloat = 3 };

  bool open(const QString& path) override;
  bool isOpen() const override { return opened; }
  int64_t sampleCount() const override { return count; }
  bool rewind() override { return opened && file.seek(dataStart); }
  int64_t samplesRemaining() const override;
  int64_t read(Sample* destination, int count) override;

  const QString& errorText() const { return error; }
  uint32_t sampleRate() const { return format.sampleRate; }

private:
  // The 24-byte body of the "fmt " chunk.
  struct Format {
    uint16_t audioFormat = 0;
    uint16_t channels = 0;
    uint32_t sampleRate = 0;
    uint32_t byteRate = 0;
    uint16_t blockAlign = 0;
    uint16_t bitsPerSample = 0;
  };

  bool fail(const char* text);
  bool readHeader();
  bool findData();

  QFile file;
  bool opened = false;
  QString error;
  Format format;
  int64_t dataStart = 0;
  int64_t count = 0;
};
