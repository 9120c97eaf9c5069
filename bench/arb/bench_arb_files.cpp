// SPDX-License-Identifier: MIT
// Loading a CSV file of 10 million I,Q lines, beside the same reading with strtod per field;
// loading a raw float file of 1e8 samples whole, beside a plain read of it, cold and warm.
#include "arb/binary_file_32fc.h"
#include "arb/csv_file_reader.h"
#include "arb/iq_file_loading.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr int csvLines = 10000000;

// Made once a run: numbers as a plotting tool writes them, with six decimals and a sign.
const QString& csvPath() {
  static QTemporaryDir dir(QDir::tempPath() + "/krt40-bench-XXXXXX");
  static const QString path = [] {
    const QString p = dir.filePath("iq.csv");
    std::FILE* f = std::fopen(QFile::encodeName(p).constData(), "w");
    std::mt19937 engine(23);
    std::uniform_real_distribution<float> value(-1.0f, 1.0f);
    for (int i = 0; i < csvLines; ++i) std::fprintf(f, "%f,%f\n", value(engine), value(engine));
    std::fclose(f);
    return p;
  }();
  return path;
}

void BM_Csv_Load10M(benchmark::State& state) {
  const QString path = csvPath();
  for (auto _ : state) {
    CSVFileReader reader;
    if (!reader.open(path) || reader.sampleCount() != csvLines) state.SkipWithError("not read");
    benchmark::DoNotOptimize(reader.data().data());
  }
  state.SetItemsProcessed(state.iterations() * csvLines);
}
BENCHMARK(BM_Csv_Load10M)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

// Baseline: a line at a time through stdio and strtod, as a first version would read it.
void BM_Csv_Load10M_Baseline(benchmark::State& state) {
  const QString path = csvPath();
  for (auto _ : state) {
    std::vector<Sample> samples;
    std::FILE* f = std::fopen(QFile::encodeName(path).constData(), "r");
    char line[256];
    while (std::fgets(line, sizeof line, f)) {
      char* end = nullptr;
      const float i = std::strtof(line, &end);
      if (*end != ',') break;
      const float q = std::strtof(end + 1, &end);
      samples.emplace_back(i, q);
    }
    std::fclose(f);
    if (samples.size() != static_cast<size_t>(csvLines)) state.SkipWithError("not read");
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetItemsProcessed(state.iterations() * csvLines);
}
BENCHMARK(BM_Csv_Load10M_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

constexpr int64_t rawSamples = 100000000;  // the arb mode's longest period

// Made once a run and synced, so that eviction works: 800 MB of float I, Q pairs.
const QString& rawPath() {
  static QTemporaryDir dir(QDir::tempPath() + "/krt40-bench-XXXXXX");
  static const QString path = [] {
    const QString p = dir.filePath("iq.bin");
    const int fd = ::open(QFile::encodeName(p).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::vector<float> chunk(1 << 21);
    for (size_t k = 0; k < chunk.size(); ++k) chunk[k] = float(k % 2001) / 1000.0f - 1.0f;
    for (int64_t left = rawSamples * 2; left > 0;) {
      const size_t n = static_cast<size_t>(std::min<int64_t>(left, int64_t(chunk.size())));
      if (::write(fd, chunk.data(), n * 4) != static_cast<ssize_t>(n * 4)) break;
      left -= static_cast<int64_t>(n);
    }
    ::fsync(fd);
    ::close(fd);
    return p;
  }();
  return path;
}

// Reads the whole file as cat does, in blocks of 128 KiB; gives the bytes read.
int64_t plainRead(const QString& path) {
  static std::vector<char> buffer(128 << 10);
  const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
  int64_t bytes = 0;
  for (ssize_t n; (n = ::read(fd, buffer.data(), buffer.size())) > 0;) bytes += n;
  ::close(fd);
  return bytes;
}

// Argument 1: out of the page cache first, so that the reads hit the disk; 0: cached first.
void prepareCache(const QString& path, bool cold) {
  if (!cold) {
    plainRead(path);
    return;
  }
  const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
  ::fsync(fd);
  ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
  ::close(fd);
}

// Times `load` of the raw file once an iteration, the page cache prepared by the argument.
template <typename Load>
void timeRawLoad(benchmark::State& state, Load load) {
  const QString path = rawPath();
  for (auto _ : state) {
    state.PauseTiming();
    prepareCache(path, state.range(0));
    state.ResumeTiming();
    BinaryFile32fc reader;
    if (!reader.open(path)) state.SkipWithError("not opened");
    const std::vector<Sample> samples = load(reader);
    if (int64_t(samples.size()) != rawSamples) state.SkipWithError("not read");
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetBytesProcessed(state.iterations() * rawSamples * 8);
}

// As the arb view loads a raw float file: every sample into one vector.
void BM_RawFloat_Load1e8(benchmark::State& state) {
  timeRawLoad(state, [](BinaryFile32fc& reader) { return readAllSamples(reader, rawSamples); });
}
BENCHMARK(BM_RawFloat_Load1e8)->ArgName("cold")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)
    ->UseRealTime()->Iterations(1);

// Baseline: the load done one step after the other, the whole vector made first and then read
// into, as it was before the read-ahead.
void BM_RawFloat_Load1e8_Sequential(benchmark::State& state) {
  timeRawLoad(state, [](BinaryFile32fc& reader) {
    std::vector<Sample> samples(static_cast<size_t>(rawSamples));
    for (int64_t done = 0, got = 1; done < rawSamples && got > 0; done += got)
      got = reader.read(samples.data() + done,
                        static_cast<int>(std::min<int64_t>(1 << 20, rawSamples - done)));
    return samples;
  });
}
BENCHMARK(BM_RawFloat_Load1e8_Sequential)->ArgName("cold")->Arg(1)->Arg(0)
    ->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

// The floor of any load: the vector's fresh memory alone, mapped page by page as it is zeroed.
void BM_RawFloat_FreshVector1e8(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<Sample> samples(static_cast<size_t>(rawSamples));
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetBytesProcessed(state.iterations() * rawSamples * 8);
}
BENCHMARK(BM_RawFloat_FreshVector1e8)->Unit(benchmark::kMillisecond)->UseRealTime()
    ->Iterations(1);

// Baseline: cat file > /dev/null.
void BM_RawFloat_Load1e8_Baseline(benchmark::State& state) {
  const QString path = rawPath();
  for (auto _ : state) {
    state.PauseTiming();
    prepareCache(path, state.range(0));
    state.ResumeTiming();
    if (plainRead(path) != rawSamples * 8) state.SkipWithError("not read");
  }
  state.SetBytesProcessed(state.iterations() * rawSamples * 8);
}
BENCHMARK(BM_RawFloat_Load1e8_Baseline)->ArgName("cold")->Arg(1)->Arg(0)
    ->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
