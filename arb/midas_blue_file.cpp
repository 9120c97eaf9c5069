// SPDX-License-Identifier: MIT
// Midas Blue files of complex samples, for the arb mode.
#include "arb/midas_blue_file.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// Byte offsets cover whole files in doubles beyond any disk: larger values are corrupt.
constexpr double maxBytes = 9007199254740992.0;  // 2^53

int32_t i32(const unsigned char* p) { return qFromLittleEndian<int32_t>(p); }
double f64(const unsigned char* p) { return qFromLittleEndian<double>(p); }

bool plausibleBytes(double v) { return std::isfinite(v) && v >= 0.0 && v <= maxBytes; }

bool seekTo(std::FILE* f, int64_t at) { return fseeko(f, static_cast<off_t>(at), SEEK_SET) == 0; }

}  // namespace

int MidasBlueFile::open(const QString& path) {
  if (handle) return -1;
  count = 0;
  handle = std::fopen(QFile::encodeName(path).constData(), "rb");
  if (!handle) return -1;
  if (std::fread(header, 1, sizeof header, handle) != sizeof header || !headerValid()) {
    close();
    return -1;
  }
  printExtendedHeader();
  return 0;
}

void MidasBlueFile::close() {
  if (handle) std::fclose(handle);
  handle = nullptr;
}

// The header rules in their order; then the data window, whose two doubles must be sizes.
bool MidasBlueFile::headerValid() {
  if (std::memcmp(header, "BLUE", 4) != 0 || std::memcmp(header + 4, "EEEI", 4) != 0 ||
      std::memcmp(header + 8, "EEEI", 4) != 0 || i32(header + 12) != 0 ||
      i32(header + 48) != 1000 || header[52] != 'C')
    return false;
  const double start = f64(header + 32), size = f64(header + 40);
  // NaN, negative or huge values would make the casts below undefined and the callers
  // allocate for samples that can't exist.
  if (!plausibleBytes(start) || !plausibleBytes(size)) return false;
  if (fseeko(handle, 0, SEEK_END) != 0) return false;
  fileSize = ftello(handle);
  dataStart = static_cast<int64_t>(start);
  // A size past the end of the file counts only the samples the file holds.
  const int64_t held = std::max<int64_t>(0, fileSize - dataStart);
  count = std::min(static_cast<int64_t>(size), held) / sampleSize();
  return true;
}

// Records are printed for whoever watches standard output; nothing else uses them. The walk
// stops at a record that doesn't fit its own length or the file, so a corrupt size neither
// loops nor reads past the end.
void MidasBlueFile::printExtendedHeader() {
  const int64_t start = int64_t{i32(header + 24)} * 512;
  const int64_t size = std::min<int64_t>(i32(header + 28), fileSize - start);
  if (start < 0) return;
  int64_t position = 0;
  while (position < size) {
    if (!seekTo(handle, start + position)) return;
    unsigned char fixed[8];
    if (std::fread(fixed, 1, 8, handle) != 8) return;
    const int64_t length = i32(fixed);
    if (length < 8 || length > size - position) return;
    if (!printRecord(start + position, length)) return;
    position += length;
  }
}

bool MidasBlueFile::printRecord(int64_t at, int64_t length) {
  std::vector<unsigned char> record(static_cast<size_t>(length));
  if (!seekTo(handle, at) || std::fread(record.data(), 1, record.size(), handle) != record.size())
    return false;
  const int64_t dataLength = length - qFromLittleEndian<int16_t>(record.data() + 4);
  const int keyLength = record[6];
  const char format = static_cast<char>(record[7]);
  if (dataLength < 0 || 8 + dataLength + keyLength > length) return false;
  const char* data = reinterpret_cast<const char*>(record.data() + 8);
  const std::string key(data + dataLength, static_cast<size_t>(keyLength));
  std::printf("KeyName: %s\n", key.c_str());
  std::printf("FormatCode: %c\n", format);
  if (format == 'A') {
    std::printf("Data: %s\n", std::string(data, strnlen(data, dataLength)).c_str());
  } else if (format == 'D') {
    for (int64_t i = 0; i + 8 <= dataLength; i += 8)
      std::printf("%f, ", f64(record.data() + 8 + i));
    std::printf("\n");
  }
  std::printf("\n");
  return true;
}

double MidasBlueFile::sampleRate() const { return handle ? 1.0 / f64(header + 256 + 8) : 0.0; }

int MidasBlueFile::sampleSize() const { return kind() == 'F' ? 8 : kind() == 'D' ? 16 : 4; }

int64_t MidasBlueFile::read(Sample* destination, int64_t first, int64_t want) {
  if (!handle || !destination || first < 0 || first >= count || want < 1) return 0;
  want = std::min(want, count - first);
  const double offset = f64(header + 32) + static_cast<double>(first) * sampleSize();
  if (!seekTo(handle, static_cast<int64_t>(offset))) return 0;
  if (kind() == 'F')
    return static_cast<int64_t>(std::fread(destination, 8, static_cast<size_t>(want), handle));
  if (kind() != 'I') return 0;
  // Midas scales 16-bit data by 1/32767, not the 2^-15 of the raw and WAV files.
  std::vector<int16_t> raw(static_cast<size_t>(want) * 2);
  const size_t got = std::fread(raw.data(), 4, static_cast<size_t>(want), handle);
  const double scale = 1.0 / 32767.0;
  for (size_t i = 0; i < got; ++i)
    destination[i] =
        Sample(static_cast<float>(raw[2 * i] * scale), static_cast<float>(raw[2 * i + 1] * scale));
  return static_cast<int64_t>(got);
}
