// SPDX-License-Identifier: MIT
// The AWGN mode's longest record and the impairment chain's noise record, each beside a plain
// build from the standard library's normal distribution and a direct 65-tap filter.
#include "core/impairment_noise.h"
#include "dsp/vec_design.h"
#include "modes/awgn/awgn_builder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr int taps = 65;

// Gaussian record, circular direct FIR in float, peak normalisation: what a first version
// of the build would do.
void plainNoiseRecord(std::vector<Sample>& x, double cutoff) {
  std::mt19937 engine(23);
  std::normal_distribution<float> normal(0.0f, std::sqrt(0.707f));
  for (Sample& s : x) s = Sample(normal(engine), normal(engine));
  float h[taps];
  designLowpass(h, taps, cutoff, 1, true);
  const int n = static_cast<int>(x.size());
  std::vector<Sample> out(x.size());
  for (int i = 0; i < n; ++i) {
    Sample acc = 0.0f;
    for (int k = 0; k < taps; ++k) acc += h[k] * x[((i + taps / 2 - k) % n + n) % n];
    out[i] = acc;
  }
  float peak = 0.0f;
  for (const Sample& s : out) peak = std::max(peak, std::abs(s));
  for (Sample& s : out) s /= peak;
  x.swap(out);
}

void BM_AwgnRecord_Longest(benchmark::State& state) {
  for (auto _ : state) {
    LongWaveform wave = buildAwgn({4e7, 0.2, 23});
    benchmark::DoNotOptimize(wave.samples.data());
  }
  state.SetItemsProcessed(state.iterations() * 10000000);
}
BENCHMARK(BM_AwgnRecord_Longest)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_AwgnRecord_Longest_Baseline(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<Sample> x(10000000);
    plainNoiseRecord(x, 0.4);
    benchmark::DoNotOptimize(x.data());
  }
  state.SetItemsProcessed(state.iterations() * 10000000);
}
BENCHMARK(BM_AwgnRecord_Longest_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

// At every restart with AWGN on: the 1,048,576-sample record at 50e6 and 10 MHz.
void BM_PrepareNoise(benchmark::State& state) {
  ImpairmentNoise noise;
  for (auto _ : state) {
    noise.prepare(-6.0, 50e6, 20.0, 1e7);
    benchmark::DoNotOptimize(noise.noise.data());
  }
  state.SetItemsProcessed(state.iterations() * ImpairmentNoise::noiseLength);
}
BENCHMARK(BM_PrepareNoise)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PrepareNoise_Baseline(benchmark::State& state) {
  std::vector<Sample> x(ImpairmentNoise::noiseLength);
  for (auto _ : state) {
    plainNoiseRecord(x, 0.1);
    benchmark::DoNotOptimize(x.data());
  }
  state.SetItemsProcessed(state.iterations() * ImpairmentNoise::noiseLength);
}
BENCHMARK(BM_PrepareNoise_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
