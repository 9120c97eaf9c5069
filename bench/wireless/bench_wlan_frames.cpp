// SPDX-License-Identifier: MIT
// The longest frames: non-HT 4095 bytes at 6 Mb/s (1366 symbols) and HT 65535 bytes at MCS 0
// (20166 symbols), each built with one FFT plan, beside a non-HT frame with a plan per symbol.
#include "wireless/frame_shaping.h"
#include "wireless/ofdm_symbol.h"
#include "wireless/subcarrier_placement.h"
#include "wireless/wlan_ht/ht_frame_builder.h"
#include "wireless/wlan_mapper.h"
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int frameBytes = 4095;
constexpr int frameSymbols = 1366;  // ceil((16 + 8 x 4095 + 6) / 24)

constexpr int htFrameBytes = 65535;
constexpr int htFrameSymbols = 20166;  // ceil((16 + 8 x 65535 + 6) / 26)

template <class Settings>
Settings longestFrame(int bytes) {
  Settings s;
  s.sourceBits.resize(127);
  for (size_t i = 0; i < s.sourceBits.size(); ++i) s.sourceBits[i] = (i * 37 / 11) & 1;
  s.bytes = bytes;
  s.idleSeconds = 0.0;
  return s;
}

NonHtSettings longestFrame() {
  NonHtSettings s = longestFrame<NonHtSettings>(frameBytes);
  s.frame.rateCode = nonHtRateRow(0).rateCode;
  s.frame.rate = nonHtRateRow(0).rate;
  return s;
}

void BM_NonHt_4095Bytes_6Mbps(benchmark::State& state) {
  const NonHtSettings s = longestFrame();
  for (auto _ : state) {
    const ComplexVector out = buildNonHtSamples(s);
    if (out.size() != 400u + 80u * frameSymbols) state.SkipWithError("wrong length");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * frameSymbols);
}
BENCHMARK(BM_NonHt_4095Bytes_6Mbps)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Ht_65535Bytes_Mcs0(benchmark::State& state) {
  HtSettings s = longestFrame<HtSettings>(htFrameBytes);
  s.frame.mcs = 0;
  for (auto _ : state) {
    const ComplexVector out = buildHtSamples(s);
    if (out.size() != 720u + 80u * htFrameSymbols) state.SkipWithError("wrong length");
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * htFrameSymbols);
}
BENCHMARK(BM_Ht_65535Bytes_Mcs0)->Unit(benchmark::kMillisecond)->UseRealTime();

// Baseline: the same number of symbols, each with its own FFT object, as a symbol function that
// owned its transform would make them; the coding is left out, so the baseline is flattered.
void BM_NonHt_4095Bytes_6Mbps_PlanPerSymbol_Baseline(benchmark::State& state) {
  BitVector bits(48);
  for (size_t i = 0; i < bits.size(); ++i) bits[i] = (i * 37 / 11) & 1;
  const ComplexVector data = mapBits(bits, WlanBpsk);
  for (auto _ : state) {
    ComplexVector frame;
    frame.reserve(400u + 80u * frameSymbols);
    for (int n = 0; n < frameSymbols + 5; ++n) {
      WlanFft fft;
      const float p = pilotPolarity(n);
      const float pilots[4] = {p, p, p, p};
      appendSymbol(frame, placeLegacySymbol(data, pilots), fft, false);
    }
    frame = normaliseRms(smoothSymbolJoins(frame, 64, 5, frameSymbols, false, 16), -6.0);
    benchmark::DoNotOptimize(frame.data());
  }
  state.SetItemsProcessed(state.iterations() * frameSymbols);
}
BENCHMARK(BM_NonHt_4095Bytes_6Mbps_PlanPerSymbol_Baseline)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
