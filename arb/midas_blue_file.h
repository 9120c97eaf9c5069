// SPDX-License-Identifier: MIT
// Midas Blue files of complex samples, for the arb mode.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <cstdint>
#include <cstdio>

// A little-endian ("EEEI") attached Blue file of type 1000, complex shape. Kinds "F" (float
// pairs) and "I" (16-bit pairs, full scale 32767) read; kind "D" opens but reads nothing.
class MidasBlueFile {
public:
  MidasBlueFile() = default;
  MidasBlueFile(const MidasBlueFile&) = delete;
  MidasBlueFile& operator=(const MidasBlueFile&) = delete;
  ~MidasBlueFile() { close(); }

  // 0 on success; -1 if already open, unreadable, or against a header rule.
  int open(const QString& path);
  void close();
  bool isOpen() const { return handle != nullptr; }

  double sampleRate() const;
  int64_t sampleCount() const { return count; }
  int sampleSize() const;
  // Reads up to count samples from sample first on; gives the samples read.
  int64_t read(Sample* destination, int64_t first, int64_t count);

private:
  bool headerValid();
  void printExtendedHeader();
  bool printRecord(int64_t at, int64_t limit);
  char kind() const { return header[53]; }

  std::FILE* handle = nullptr;
  unsigned char header[512] = {};  // the two 256-byte blocks
  int64_t fileSize = 0;
  int64_t dataStart = 0;
  int64_t count = 0;
};
