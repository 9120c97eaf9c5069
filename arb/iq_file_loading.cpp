// SPDX-License-Identifier: MIT
// Whole files read into memory, for the arb mode and the sequence editor.
#include "arb/iq_file_loading.h"

#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "arb/csv_file_reader.h"
#include "arb/midas_blue_file.h"
#include "arb/sigmf_reader.h"
#include "arb/wav_reader.h"

#include <algorithm>
#include <memory>

namespace {

constexpr int readBlock = 1 << 20;  // samples a read

std::unique_ptr<IQFileReader> readerFor(int kind) {
  switch (kind) {
    case KindBinary16: return std::make_unique<BinaryFile16sc>();
    case KindBinary32: return std::make_unique<BinaryFile32fc>();
    case KindWav: return std::make_unique<WavReader>();
    case KindSigMF: return std::make_unique<SigMFReader>();
    default: return nullptr;
  }
}

// The reader parses the whole text at open; a bad line fails the open but keeps the samples
// before it.
bool readCsv(const QString& path, int64_t limit, std::vector<Sample>& out) {
  CSVFileReader reader;
  if (!reader.open(path) && reader.errorText().isEmpty()) return false;
  const std::vector<Sample>& data = reader.data();
  out.assign(data.begin(), data.begin() + std::min<int64_t>(limit, reader.sampleCount()));
  return true;
}

bool readMidas(const QString& path, int64_t limit, std::vector<Sample>& out) {
  MidasBlueFile file;
  if (file.open(path) != 0) return false;
  const int64_t count = std::min(file.sampleCount(), limit);
  out.assign(static_cast<size_t>(std::max<int64_t>(count, 0)), Sample());
  file.read(out.data(), 0, count);  // a kind it can't read leaves zeros
  return true;
}

}  // namespace

std::vector<Sample> readAllSamples(IQFileReader& reader, int64_t limit) {
  const int64_t count = std::min(reader.sampleCount(), limit);
  std::vector<Sample> samples(static_cast<size_t>(std::max<int64_t>(count, 0)));
  int64_t done = 0;
  while (done < count) {
    const int64_t got = reader.read(samples.data() + done,
                                    static_cast<int>(std::min<int64_t>(readBlock, count - done)));
    if (got <= 0) break;
    done += got;
  }
  samples.resize(static_cast<size_t>(done));
  return samples;
}

bool readWholeFile(int kind, const QString& path, int64_t limit, std::vector<Sample>& out) {
  if (kind == KindCsv) return readCsv(path, limit, out);
  if (kind == KindMidasBlue) return readMidas(path, limit, out);
  std::unique_ptr<IQFileReader> reader = readerFor(kind);
  if (!reader || !reader->open(path)) return false;
  out = readAllSamples(*reader, limit);
  return true;
}
