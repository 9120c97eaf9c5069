// SPDX-License-Identifier: MIT
// The longest and the default digital modulation builds, and the longest FSK build, each beside
// the same zero-stuffed record filtered by a plain circular direct-form loop; with the peak of
// heap memory a build holds, against the size of its output.
#include "digital/bit_sources.h"
#include "digital/filter_designs.h"
#include "digital/fsk_builder.h"
#include "digital/linear_mod_builder.h"
#include "digital/modulation_map.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <new>
#include <vector>

// Every plain new and delete of the process is counted, so that a benchmark can tell the most
// heap a build held at once.
namespace {
std::atomic<int64_t> liveBytes{0}, peakBytes{0};

void* countedAlloc(size_t size) {
  void* p = std::malloc(size ? size : 1);
  if (!p) throw std::bad_alloc();
  const int64_t live = liveBytes += static_cast<int64_t>(malloc_usable_size(p));
  int64_t peak = peakBytes.load();
  while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
  }
  return p;
}

void countedFree(void* p) {
  if (!p) return;
  liveBytes -= static_cast<int64_t>(malloc_usable_size(p));
  std::free(p);
}
}  // namespace

void* operator new(size_t size) { return countedAlloc(size); }
void* operator new[](size_t size) { return countedAlloc(size); }
void operator delete(void* p) noexcept { countedFree(p); }
void operator delete[](void* p) noexcept { countedFree(p); }
void operator delete(void* p, size_t) noexcept { countedFree(p); }
void operator delete[](void* p, size_t) noexcept { countedFree(p); }

namespace {

// Runs one build outside the timed loop and reports the most heap it held beyond what was live
// before it, in MiB and in units of its output's size (the output itself included).
template <class Build>
void countPeak(benchmark::State& state, Build build) {
  const int64_t before = liveBytes.load();
  peakBytes = before;
  const Waveform wave = build();
  const double peak = static_cast<double>(peakBytes.load() - before);
  const double output = static_cast<double>(wave.samples.size() * sizeof(Sample));
  state.counters["peak_MiB"] = peak / (1024.0 * 1024.0);
  state.counters["peak_per_output"] = output > 0 ? peak / output : 0.0;
}

std::vector<float> rrcTaps(int oversample, int spanSymbols) {
  std::vector<float> taps(static_cast<size_t>(oversample * spanSymbols + 1));
  designRootRaisedCosine(taps.data(), static_cast<int>(taps.size()), 0.35, oversample);
  return taps;
}

LinearModSettings qpsk(int order, int oversample, int spanSymbols) {
  LinearModSettings s;
  s.map = defaultModulationMap(DigitalModQPSK);
  s.taps = rrcTaps(oversample, spanSymbols);
  s.oversample = oversample;
  s.bits = modulationBits(order, 23, {}, 2);
  return s;
}

FskSettings fsk2(int order, int oversample, int spanSymbols) {
  FskSettings s;
  s.mod = DigitalMod2FSK;
  s.taps = rrcTaps(oversample, spanSymbols);
  s.oversample = oversample;
  s.bits = modulationBits(order, 23, {}, 1);
  return s;
}

std::vector<float> tapsSummingTo(const std::vector<float>& taps, int oversample) {
  double sum = 0.0;
  for (float t : taps) sum += t;
  std::vector<float> scaled;
  for (float t : taps) scaled.push_back(static_cast<float>(t * (oversample / sum)));
  return scaled;
}

// y(i) = sum over k of h(k) x((i + half - k) mod n), one output at a time: what a first version
// of the shaping would do. Assumes n >= taps, as in every record timed here.
template <class T>
std::vector<T> directCircular(const std::vector<T>& x, const std::vector<float>& h) {
  const int64_t n = static_cast<int64_t>(x.size()), taps = static_cast<int64_t>(h.size());
  const int64_t half = taps / 2;
  std::vector<T> y(x.size());
  for (int64_t i = 0; i < n; ++i) {
    T acc = T();
    for (int64_t k = 0; k < taps; ++k) {
      int64_t j = i + half - k;
      if (j < 0) j += n;
      if (j >= n) j -= n;
      acc += h[static_cast<size_t>(k)] * x[static_cast<size_t>(j)];
    }
    y[static_cast<size_t>(i)] = acc;
  }
  return y;
}

// The plain linear build: points zero-stuffed into the record, shaped sample by sample.
Waveform directLinear(const LinearModSettings& s) {
  const int os = s.oversample;
  std::vector<Sample> states = s.map.states;
  normalizeConstellation(states, s.iqScaling);
  const std::vector<uint32_t> symbols = symbolsFromBits(s.bits, bitsPerSymbol(s.map));
  std::vector<Sample> x(symbols.size() * static_cast<size_t>(os));
  for (size_t p = 0; p < symbols.size(); ++p) x[p * os] = states[symbols[p]];
  Waveform wave;
  wave.samples = directCircular(x, tapsSummingTo(s.taps, os));
  wave.sampleRate = s.symbolRateHz * os;
  wave.levelOffsetDb = meanPowerDb(wave.samples.data(), static_cast<int64_t>(x.size()));
  return wave;
}

// The plain FSK build: impulses shaped sample by sample, then the same rotor chain as the build.
Waveform directFsk(const FskSettings& s) {
  const int os = s.oversample;
  const double a = s.deviationHz / (s.symbolRateHz * os);
  const std::vector<uint32_t> symbols = symbolsFromBits(s.bits, 1);
  std::vector<float> x(symbols.size() * static_cast<size_t>(os));
  for (size_t p = 0; p < symbols.size(); ++p)
    x[p * os] = static_cast<float>(symbols[p] == 1 ? a : -a);
  const std::vector<float> track = directCircular(x, tapsSummingTo(s.taps, os));
  constexpr float twoPi = 6.28318548f;
  Waveform wave;
  wave.samples.resize(track.size());
  Sample y(1.0f, 0.0f);
  for (size_t i = 0; i < track.size(); ++i) {
    const double phase = track[i] * twoPi;
    const Sample z(static_cast<float>(std::cos(phase)), static_cast<float>(std::sin(phase)));
    y = i == 0 ? z
               : Sample(y.real() * z.real() - y.imag() * z.imag(),
                        y.real() * z.imag() + y.imag() * z.real());
    wave.samples[i] = y;
  }
  wave.sampleRate = s.symbolRateHz * os;
  wave.levelOffsetDb = meanPowerDb(wave.samples.data(), static_cast<int64_t>(track.size()));
  return wave;
}

template <class Settings, class Build>
void runBuild(benchmark::State& state, const Settings& settings, Build build) {
  countPeak(state, [&] { return build(settings); });
  int64_t samples = 0;
  for (auto _ : state) {
    const Waveform wave = build(settings);
    samples = static_cast<int64_t>(wave.samples.size());
    benchmark::DoNotOptimize(wave.samples.data());
  }
  state.SetItemsProcessed(state.iterations() * samples);
}

// The longest record: PN21 at os 8 through a 32-symbol filter, 16.8 million samples; with a
// gap of 1 s (8 million zeros) as well, for the memory a build with a gap holds.
void BM_Linear_Pn21Os8(benchmark::State& state) {
  LinearModSettings settings = qpsk(21, 8, 32);
  settings.offDurationS = state.range(0) / 1000.0;
  runBuild(state, settings, buildLinearMod);
}
BENCHMARK(BM_Linear_Pn21Os8)
    ->ArgName("gap_ms")
    ->Arg(0)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_Linear_Pn21Os8_Baseline(benchmark::State& state) {
  runBuild(state, qpsk(21, 8, 32), directLinear);
}
BENCHMARK(BM_Linear_Pn21Os8_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

// The panel's defaults: QPSK, PN15, os 4, an 8-symbol filter.
void BM_Linear_Pn15Os4(benchmark::State& state) { runBuild(state, qpsk(15, 4, 8), buildLinearMod); }
BENCHMARK(BM_Linear_Pn15Os4)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Linear_Pn15Os4_Baseline(benchmark::State& state) {
  runBuild(state, qpsk(15, 4, 8), directLinear);
}
BENCHMARK(BM_Linear_Pn15Os4_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Fsk2_Pn21Os8(benchmark::State& state) {
  FskSettings settings = fsk2(21, 8, 32);
  settings.offDurationS = state.range(0) / 1000.0;
  runBuild(state, settings, buildFsk);
}
BENCHMARK(BM_Fsk2_Pn21Os8)
    ->ArgName("gap_ms")
    ->Arg(0)
    ->Arg(1000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_Fsk2_Pn21Os8_Baseline(benchmark::State& state) {
  runBuild(state, fsk2(21, 8, 32), directFsk);
}
BENCHMARK(BM_Fsk2_Pn21Os8_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
