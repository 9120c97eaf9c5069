// SPDX-License-Identifier: MIT
// AM and FM builds at their largest periods against a plain per-definition baseline. Both are
// tiny next to a thread restart; the numbers are reported, not judged.
#include "modes/am_fm/am_fm_builder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr double pi = 3.14159265358979323846;

// Shape value straight from its definition, re-deriving h and q for every sample.
double shapeByDefinition(int shape, int i, int n) {
  const int h = n / 2, q = h / 2;
  const int t = i < h ? i : n - i;
  switch (shape) {
    case ModShapeSine: return std::sin(i * 2 * pi / n);
    case ModShapeSquare: return i < h ? 1.0 : -1.0;
    case ModShapeTriangle: return static_cast<double>(t) / q - 1.0;
    default: return static_cast<double>(i) / h - 1.0;
  }
}

// AM by its definition: halve until S <= 5e7, then push one sample after the other.
std::vector<std::complex<float>> amBaseline(double rate, double depth, int shape) {
  int n = 16384;
  double s = rate * 16384;
  while (s > 5e7) {
    s /= 2;
    n >>= 1;
  }
  std::vector<std::complex<float>> out;
  for (int i = 0; i < n; ++i)
    out.push_back({static_cast<float>(shapeByDefinition(shape, i, n) * depth / 200 + 0.5), 0.0f});
  return out;
}

// FM by its definition: float f, rotors via std::polar, the std::complex<float> product chain,
// doubling by inserting a copy.
std::vector<std::complex<float>> fmBaseline(double rate, double deviation, int shape) {
  const double w = std::min(std::min(deviation, rate) * 3.0 * 1000.0, 5e7);
  int n = static_cast<int>(w / rate);
  if (n % 2) --n;
  const double a = deviation / (n * rate);
  std::vector<float> f;
  for (int i = 0; i < n; ++i) f.push_back(static_cast<float>(shapeByDefinition(shape, i, n) * a));
  std::vector<std::complex<float>> y;
  for (int i = 0; i < n; ++i) {
    const std::complex<double> zd = std::polar(1.0, 2 * pi * f[i]);
    const std::complex<float> z(static_cast<float>(zd.real()), static_cast<float>(zd.imag()));
    y.push_back(i == 0 ? z : y.back() * z);
  }
  while (y.size() < 1024) {
    const std::vector<std::complex<float>> copy = y;
    y.insert(y.end(), copy.begin(), copy.end());
  }
  return y;
}

// The two must agree before their times mean anything.
void expectSame(benchmark::State& state, const std::vector<Sample>& built,
                const std::vector<std::complex<float>>& baseline, float tolerance) {
  if (built.size() != baseline.size()) {
    state.SkipWithError("lengths differ");
    return;
  }
  float worst = 0.0f;
  for (size_t i = 0; i < built.size(); ++i)
    worst = std::max(worst, std::abs(built[i] - baseline[i]));
  if (worst > tolerance) state.SkipWithError("samples differ");
  state.counters["max_diff"] = worst;
}

// Rate 1 Hz: the longest AM period, 16384 samples.
void BM_BuildAm(benchmark::State& state) {
  const AmSettings settings{1.0, 80.0, static_cast<int>(state.range(0))};
  expectSame(state, buildAm(settings).samples, amBaseline(1.0, 80.0, settings.shape), 1e-7f);
  for (auto _ : state) benchmark::DoNotOptimize(buildAm(settings));
  state.SetItemsProcessed(state.iterations() * 16384);
}

void BM_BaselineAm(benchmark::State& state) {
  const int shape = static_cast<int>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(amBaseline(1.0, 80.0, shape));
  state.SetItemsProcessed(state.iterations() * 16384);
}

// Rate 1 kHz, deviation 1 kHz: the longest FM period, 3000 samples. The baseline's polar()
// rounds differently from cos/sin in the last bit, hence the tolerance.
void BM_BuildFm(benchmark::State& state) {
  const FmSettings settings{1000.0, 1000.0, static_cast<int>(state.range(0))};
  expectSame(state, buildFm(settings).samples, fmBaseline(1000.0, 1000.0, settings.shape), 1e-5f);
  for (auto _ : state) benchmark::DoNotOptimize(buildFm(settings));
  state.SetItemsProcessed(state.iterations() * 3000);
}

void BM_BaselineFm(benchmark::State& state) {
  const int shape = static_cast<int>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(fmBaseline(1000.0, 1000.0, shape));
  state.SetItemsProcessed(state.iterations() * 3000);
}

// Rate 1e7, deviation 1e4: N = 2, doubled nine times to 1024.
void BM_BuildFmDoubled(benchmark::State& state) {
  const FmSettings settings{1e7, 1e4, ModShapeSine};
  for (auto _ : state) benchmark::DoNotOptimize(buildFm(settings));
  state.SetItemsProcessed(state.iterations() * 1024);
}

#define SHAPES ->Arg(ModShapeSine)->Arg(ModShapeSquare)->Arg(ModShapeTriangle)->Arg(ModShapeRamp)
BENCHMARK(BM_BuildAm) SHAPES;
BENCHMARK(BM_BaselineAm) SHAPES;
BENCHMARK(BM_BuildFm) SHAPES;
BENCHMARK(BM_BaselineFm) SHAPES;
BENCHMARK(BM_BuildFmDoubled);

}  // namespace

BENCHMARK_MAIN();
