// SPDX-License-Identifier: MIT
// Two-channel WAV files, 16-bit PCM or 32-bit IEEE float; left is I, right is Q.
#include "arb/wav_reader.h"

#include "arb/raw_iq_file.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

constexpr int headerBytes = 36;  // RIFF header and the "fmt " chunk with its 16-byte body

uint16_t u16(const uchar* p) { return qFromLittleEndian<uint16_t>(p); }
uint32_t u32(const uchar* p) { return qFromLittleEndian<uint32_t>(p); }

}  // namespace

bool WavReader::fail(const char* text) {
  error = QString::fromLatin1(text);
  file.close();
  opened = false;
  return false;
}

bool WavReader::open(const QString& path) {
  file.close();
  opened = false;
  error.clear();
  file.setFileName(path);
  if (!file.open(QIODevice::ReadOnly)) return fail("Unable to open file");
  if (!readHeader() || !findData()) return false;
  opened = true;
  return true;
}

// A short file reads as zeros past its end, so a truncated header fails at its first
// missing field with that field's text.
bool WavReader::readHeader() {
  uchar h[headerBytes] = {};
  file.read(reinterpret_cast<char*>(h), headerBytes);
  if (std::memcmp(h, "RIFF", 4) != 0) return fail("Invalid format (RIFF)");
  if (std::memcmp(h + 8, "WAVE", 4) != 0) return fail("Invalid format (WAVE)");
  if (std::memcmp(h + 12, "fmt ", 4) != 0) return fail("Invalid format (fmt )");
  if (u32(h + 16) != 16) return fail("Invalid FMT chunk size");
  format = {u16(h + 20), u16(h + 22), u32(h + 24), u32(h + 28), u16(h + 32), u16(h + 34)};
  if (format.channels != 2) return fail("Invalid number of channels");
  if (format.audioFormat != Pcm && format.audioFormat != IeeeFloat)
    return fail("Invalid audio format");
  if (format.audioFormat == Pcm && format.bitsPerSample != 16)
    return fail("Invalid PCM bit depth, expected 16-bit");
  if (format.audioFormat == IeeeFloat && format.bitsPerSample != 32)
    return fail("Invalid IEEE sample size, expected 32-bit");
  // read() fills count × block align bytes of a buffer of count samples: any other block
  // align would divide by zero or write past the caller's buffer.
  if (format.blockAlign != format.channels * format.bitsPerSample / 8)
    return fail("Invalid block align");
  return true;
}

// Chunks other than "data" are skipped by their stated size; every step moves at least 8
// bytes, so the walk ends at the end of the file.
bool WavReader::findData() {
  for (;;) {
    uchar h[8];
    if (file.read(reinterpret_cast<char*>(h), 8) != 8) return fail("No DATA chunk found");
    const int64_t size = u32(h + 4);
    if (std::memcmp(h, "data", 4) == 0) {
      dataStart = file.pos();
      // A size that claims more than the file holds would have the callers allocate and
      // read for samples that aren't there: count only what the file really has.
      const int64_t held = std::max<int64_t>(0, file.size() - dataStart);
      count = std::min(size, held) / format.blockAlign;
      return true;
    }
    if (!file.seek(file.pos() + size)) return fail("No DATA chunk found");
  }
}

int64_t WavReader::samplesRemaining() const {
  if (!opened) return -1;
  return count - (file.pos() - dataStart) / format.blockAlign;
}

int64_t WavReader::read(Sample* destination, int want) {
  if (!opened) return -1;
  if (!destination || want < 1) return 0;
  const int64_t n = std::min<int64_t>(want, std::max<int64_t>(0, samplesRemaining()));
  if (n < 1) return 0;
  int64_t bytes = 0;
  if (format.audioFormat == Pcm)
    bytes = readInt16PairsInPlace(file, destination, n);
  else if (format.audioFormat == IeeeFloat)
    bytes = file.read(reinterpret_cast<char*>(destination), n * format.blockAlign);
  return std::max<int64_t>(bytes, 0) / format.blockAlign;
}
