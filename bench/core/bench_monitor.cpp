// SPDX-License-Identifier: MIT
// The output monitor's work on the user interface thread for one snapshot: spectrum, CCDF, I/Q
// and the repaint of the three plots, at each number of bins. At twenty updates a second the
// share of one core is 20 x the time of one update.
#include "core/device.h"
#include "core/output_monitor.h"
#include "core/output_tap.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <chrono>
#include <complex>
#include <random>

namespace {

// 64 tones of random phases over the band, like a multitone playing.
OutputSnapshot multitoneSnapshot() {
  OutputSnapshot snapshot;
  snapshot.samples.resize(OutputTap::snapshotSamples);
  snapshot.count = OutputTap::snapshotSamples;
  snapshot.centerFrequencyHz = 1e9;
  snapshot.sampleRateHz = 50e6;
  std::mt19937 random(7);
  std::uniform_real_distribution<float> phase(0.0f, 6.2831853f);
  std::vector<float> phases(64);
  for (float& p : phases) p = phase(random);
  for (int t = 0; t < snapshot.count; ++t) {
    std::complex<float> sum;
    for (int k = 0; k < 64; ++k)
      sum += std::polar(1.0f / 64, phases[size_t(k)] + 6.2831853f * (k - 32) * t / 128.0f);
    snapshot.samples[size_t(t)] = sum;
  }
  return snapshot;
}

void BM_MonitorUpdate(benchmark::State& state) {
  Device device;
  OutputMonitor monitor(&device);
  monitor.resize(1100, 460);
  monitor.show();
  monitor.setBins(static_cast<int>(state.range(0)));
  const OutputSnapshot snapshot = multitoneSnapshot();
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    monitor.showSnapshot(snapshot);
    monitor.repaint();
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  state.counters["core_percent_at_20_per_s"] = 20.0 * 100.0 * elapsed.count() / state.iterations();
}
BENCHMARK(BM_MonitorUpdate)
    ->ArgName("bins")
    ->Arg(1024)
    ->Arg(16384)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
