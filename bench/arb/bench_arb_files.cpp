// SPDX-License-Identifier: MIT
// Loading a CSV file of 10 million I,Q lines, beside the same reading with strtod per field.
#include "arb/csv_file_reader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

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

}  // namespace

BENCHMARK_MAIN();
