// SPDX-License-Identifier: MIT
// Vector kernels against plain loops and library baselines in the same run.
//
// Sizes are those of the callers: 833,333 samples is one 1/60 s chunk at 50e6 in the streaming
// loop (copy, noise addition); 2 × 1,048,576 floats is the impairment noise record, filtered
// circularly by 65 taps; tones fill multitone buffers of millions of samples.
#include "dsp/filter_circular.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_design.h"
#include "dsp/vec_fft.h"
#include "dsp/vec_fill.h"
#include "dsp/vec_fir.h"
#include "dsp/vec_random.h"
#include "dsp/vec_reduce.h"
#include "dsp/vec_reference.h"
#include "dsp/vec_status.h"
#include "dsp/vec_tone.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int kChunk = 833333;
constexpr int kNoise = 1048576;

std::vector<Sample> samples(int n, float seed) {
  std::vector<Sample> v(n);
  for (int i = 0; i < n; ++i) v[i] = Sample(seed * (i % 977) * 1e-3f, -(i % 613) * 1e-3f);
  return v;
}

void finish(benchmark::State& state, int64_t items, const void* out) {
  benchmark::DoNotOptimize(out);
  benchmark::ClobberMemory();
  state.SetItemsProcessed(state.iterations() * items);
}

// Streaming loop: copy and noise addition of one chunk.

void BM_Copy32fc_Memcpy(benchmark::State& state) {
  const auto src = samples(kChunk, 1.0f);
  std::vector<Sample> dst(kChunk);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), sizeof(Sample) * kChunk);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
}
BENCHMARK(BM_Copy32fc_Memcpy);

void BM_Copy32fc_Vec(benchmark::State& state) {
  const auto src = samples(kChunk, 1.0f);
  std::vector<Sample> dst(kChunk);
  for (auto _ : state) {
    vecCopy32fc(src.data(), dst.data(), kChunk);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
}
BENCHMARK(BM_Copy32fc_Vec);

void BM_Add32fc_PlainLoop(benchmark::State& state) {
  const auto a = samples(kChunk, 1.0f), b = samples(kChunk, 2.0f);
  std::vector<Sample> dst(kChunk);
  for (auto _ : state) {
    vecref::add32fc(a.data(), b.data(), dst.data(), kChunk);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
}
BENCHMARK(BM_Add32fc_PlainLoop);

void BM_Add32fc_Vec(benchmark::State& state) {
  const auto a = samples(kChunk, 1.0f), b = samples(kChunk, 2.0f);
  std::vector<Sample> dst(kChunk);
  for (auto _ : state) {
    vecAdd32fc(a.data(), b.data(), dst.data(), kChunk);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
}
BENCHMARK(BM_Add32fc_Vec);

// Gaussian noise: the impairment record of 2 × 1,048,576 floats.

void BM_Gauss_StdNormalDistribution(benchmark::State& state) {
  std::vector<float> dst(2 * kNoise);
  for (auto _ : state) {
    std::mt19937 rng(0);
    std::normal_distribution<float> dist(0.0f, 1.0f);
    for (float& x : dst) x = dist(rng);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * 2 * kNoise);
}
BENCHMARK(BM_Gauss_StdNormalDistribution)->Unit(benchmark::kMillisecond);

void BM_Gauss_Vec(benchmark::State& state) {
  std::vector<float> dst(2 * kNoise);
  for (auto _ : state) {
    vecRandGauss32f(dst.data(), 2 * kNoise, 0.0f, 1.0f, 0);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * 2 * kNoise);
}
BENCHMARK(BM_Gauss_Vec)->Unit(benchmark::kMillisecond);

// FIR of 65 taps over the noise record. Arg 0: complex taps; 1: real taps held as complex
// (the noise filters' case).

std::vector<Sample> firTaps(bool realTaps) {
  std::vector<double> design(65);
  vecDesignLowpass(0.2, design.data(), 65, VecWindowBlackman, true);
  std::vector<Sample> taps(65);
  for (int k = 0; k < 65; ++k)
    taps[k] = Sample(static_cast<float>(design[k]), realTaps ? 0.0f : 0.01f);
  return taps;
}

void BM_Fir65_PlainLoop(benchmark::State& state) {
  const auto taps = firTaps(state.range(0));
  const auto x = samples(kNoise, 1.0f);
  std::vector<Sample> y(kNoise);
  for (auto _ : state) {
    vecref::fir32fc(taps.data(), 65, x.data(), y.data(), kNoise);
    finish(state, 0, y.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Fir65_PlainLoop)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

template <VecFirMethod method>
void BM_Fir65(benchmark::State& state) {
  const auto taps = firTaps(state.range(0));
  auto x = samples(kNoise, 1.0f);
  auto fir = vecFirCreate32fc(taps.data(), 65, method);
  for (auto _ : state) {
    vecFirApply32fc(fir.get(), x.data(), x.data(), kNoise);
    finish(state, 0, x.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Fir65<VecFirMethod::Direct>)
    ->Name("BM_Fir65_Direct")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fir65<VecFirMethod::Fft>)
    ->Name("BM_Fir65_Fft")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond);

// Direct against FFT over tap counts, to place the Auto threshold.
template <VecFirMethod method>
void BM_FirTaps(benchmark::State& state) {
  const int taps = static_cast<int>(state.range(0));
  std::vector<Sample> h(taps, Sample(0.01f, 0.02f));
  auto x = samples(kNoise, 1.0f);
  auto fir = vecFirCreate32fc(h.data(), taps, method);
  for (auto _ : state) {
    vecFirApply32fc(fir.get(), x.data(), x.data(), kNoise);
    finish(state, 0, x.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_FirTaps<VecFirMethod::Direct>)
    ->Name("BM_FirTaps_Direct")
    ->Arg(15)
    ->Arg(33)
    ->Arg(65)
    ->Arg(129)
    ->Arg(257)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FirTaps<VecFirMethod::Fft>)
    ->Name("BM_FirTaps_Fft")
    ->Arg(15)
    ->Arg(33)
    ->Arg(65)
    ->Arg(129)
    ->Arg(257)
    ->Unit(benchmark::kMillisecond);

// What prepareNoise does: fill, then filter the record circularly.
void BM_NoiseRecord_GaussAndCircularFir65(benchmark::State& state) {
  const auto taps = firTaps(true);
  std::vector<Sample> noise(kNoise);
  for (auto _ : state) {
    vecRandGauss32f(reinterpret_cast<float*>(noise.data()), 2 * kNoise, 0.0f, 1.0f, 0);
    auto fir = vecFirCreate32fc(taps.data(), 65);
    filterCircular(fir.get(), noise.data(), kNoise);
    finish(state, 0, noise.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_NoiseRecord_GaussAndCircularFir65)->Unit(benchmark::kMillisecond);

// Tones: one tone of a multitone buffer.

void BM_Tone_PlainLoop(benchmark::State& state) {
  std::vector<Sample> dst(kNoise);
  for (auto _ : state) {
    vecref::tone32fc(dst.data(), kNoise, 1.0f, 0.1234567f, 0.5f);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Tone_PlainLoop)->Unit(benchmark::kMillisecond);

void BM_Tone_Vec(benchmark::State& state) {
  std::vector<Sample> dst(kNoise);
  const int hint = static_cast<int>(state.range(0));
  for (auto _ : state) {
    float phase = 0.5f;
    vecTone32fc(dst.data(), kNoise, 1.0f, 0.1234567f, &phase, hint);
    finish(state, 0, dst.data());
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Tone_Vec)->Arg(VecHintFast)->Arg(VecHintAccurate)->Unit(benchmark::kMillisecond);

// Sums: the accurate form against the in-order double loop.

void BM_Sum_PlainDoubleLoop(benchmark::State& state) {
  std::vector<float> v(kNoise, 1e-3f);
  for (auto _ : state) benchmark::DoNotOptimize(vecref::sum32f(v.data(), kNoise));
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Sum_PlainDoubleLoop);

void BM_Sum_Vec(benchmark::State& state) {
  std::vector<float> v(kNoise, 1e-3f);
  float sum;
  for (auto _ : state) {
    vecSum32f(v.data(), kNoise, &sum, static_cast<int>(state.range(0)));
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kNoise);
}
BENCHMARK(BM_Sum_Vec)->Arg(VecHintFast)->Arg(VecHintAccurate);

// The 64-point inverse of every WLAN symbol and the 1024-point spectrum of the filter editors.
void BM_FftForward(benchmark::State& state) {
  const int order = static_cast<int>(state.range(0));
  auto fft = vecFftCreate(order, VecFftDivInvByN, VecHintAccurate);
  auto x = samples(1 << order, 1.0f);
  for (auto _ : state) {
    vecFftForward32fc(x.data(), x.data(), fft.get());
    finish(state, 0, x.data());
  }
  state.SetItemsProcessed(state.iterations() * (1 << order));
}
BENCHMARK(BM_FftForward)->Arg(6)->Arg(10)->Arg(20);

}  // namespace

BENCHMARK_MAIN();
