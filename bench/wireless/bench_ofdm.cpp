// SPDX-License-Identifier: MIT
// The two default OFDM configurations generated from scratch (target: under 20 ms each), beside
// the inverse FFTs of the same symbols alone.
#include "dsp/vec_fft.h"
#include "wireless/ofdm/ofdm_generator.h"

#include <benchmark/benchmark.h>

namespace {

void BM_Ofdm_Default(benchmark::State& state) {
  const OFDMConfig config = defaultOfdmConfig(static_cast<int>(state.range(0)));
  const size_t length = size_t(config.symbolCount) * (config.fftSize + config.fftSize / 4);
  for (auto _ : state) {
    const std::vector<Sample> out = generateOfdm(config);
    if (out.size() != length) state.SkipWithError("wrong length");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * config.symbolCount);
}
BENCHMARK(BM_Ofdm_Default)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// Baseline: only the transforms of configuration 1's 24 symbols, one FFT object for all; what
// the grid's filling and the PN sources add shows as the difference.
void BM_Ofdm_InverseFftsOnly_Baseline(benchmark::State& state) {
  const OFDMConfig config = defaultOfdmConfig(1);
  const auto grid = buildOfdmGrid(config);
  for (auto _ : state) {
    VecStatePtr<VecFft> fft = vecFftCreate(6, VecFftDivBySqrtN, 0);
    std::vector<Sample> out(size_t(config.symbolCount) * 80);
    for (int s = 0; s < config.symbolCount; ++s)
      vecFftInverse32fc(grid[s].data(), out.data() + s * 80 + 16, fft.get());
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * config.symbolCount);
}
BENCHMARK(BM_Ofdm_InverseFftsOnly_Baseline)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
