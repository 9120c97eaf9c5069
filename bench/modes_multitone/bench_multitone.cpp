// SPDX-License-Identifier: MIT
// Multitone build: the comb from one inverse FFT of a period against tone-by-tone synthesis.
//
// Every build reports the peak of live heap bytes it caused (a counting operator new) as
// "peak_MB". `bench_multitone --rss fast|direct <tones> <spacing Hz>` builds once in a fresh
// process and prints the growth of the resident set instead.
#include "modes/multitone/multitone_builder.h"

#include <benchmark/benchmark.h>

#include <malloc.h>
#include <sys/resource.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<size_t> liveBytes{0};
std::atomic<size_t> peakBytes{0};

void* counted(size_t size) {
  void* p = std::malloc(size ? size : 1);
  if (!p) throw std::bad_alloc();
  const size_t live = liveBytes += malloc_usable_size(p);
  size_t peak = peakBytes.load();
  while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
  }
  return p;
}

void uncounted(void* p) {
  if (!p) return;
  liveBytes -= malloc_usable_size(p);
  std::free(p);
}

}  // namespace

void* operator new(size_t size) { return counted(size); }
void* operator new[](size_t size) { return counted(size); }
void operator delete(void* p) noexcept { uncounted(p); }
void operator delete[](void* p) noexcept { uncounted(p); }
void operator delete(void* p, size_t) noexcept { uncounted(p); }
void operator delete[](void* p, size_t) noexcept { uncounted(p); }

namespace {

MultitoneSettings comb(int64_t tones, int64_t spacingHz) {
  MultitoneSettings s;
  s.toneCount = static_cast<int>(tones);
  s.spacingHz = static_cast<double>(spacingHz);
  s.phase = MultiTonePhaseParabolic;
  return s;
}

template <Waveform (*Build)(const MultitoneSettings&, const MultitoneProgress&)>
void BM_Multitone(benchmark::State& state) {
  const MultitoneSettings settings = comb(state.range(0), state.range(1));
  size_t peak = 0;
  int64_t length = 0;
  for (auto _ : state) {
    const size_t before = liveBytes.load();
    peakBytes.store(before);
    Waveform wave = Build(settings, {});
    benchmark::DoNotOptimize(wave.samples.data());
    peak = std::max(peak, peakBytes.load() - before);
    length = static_cast<int64_t>(wave.samples.size());
  }
  state.counters["samples"] = double(length);
  state.counters["peak_MB"] = double(peak) / 1e6;
  state.SetItemsProcessed(state.iterations() * length);
}

// The baseline's cost is tones x samples: 100 and 200 tones take it a fraction of a second.
// 4000 tones at 1e4 Hz is the target case, 5,118,976 samples.
BENCHMARK_TEMPLATE(BM_Multitone, buildMultitoneDirect)
    ->Args({100, 10000})
    ->Args({200, 10000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_Multitone, buildMultitone)
    ->Args({100, 10000})
    ->Args({200, 10000})
    ->Args({4000, 10000})
    ->Args({4001, 10000})
    ->Args({3998, 10000})
    ->Unit(benchmark::kMillisecond);

long maxRssKb() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

int rssRun(const char* kind, int tones, double spacingHz) {
  const long before = maxRssKb();
  MultitoneSettings s = comb(tones, static_cast<int64_t>(spacingHz));
  const Waveform wave =
      std::strcmp(kind, "direct") == 0 ? buildMultitoneDirect(s) : buildMultitone(s);
  std::printf("%s %d tones at %g Hz: %zu samples, resident set grew by %.1f MB\n", kind, tones,
              spacingHz, wave.samples.size(), double(maxRssKb() - before) / 1e3);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 5 && std::strcmp(argv[1], "--rss") == 0)
    return rssRun(argv[2], std::atoi(argv[3]), std::atof(argv[4]));
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
