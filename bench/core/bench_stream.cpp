// SPDX-License-Identifier: MIT
// The steady submit loop at 50e6 samples a second against the unpaced simulated device,
// beside a plain memcpy of the same bytes, and the allocations it makes per chunk.
#include "core/device.h"
#include "core/impairment_noise.h"
#include "core/impairment_stage.h"
#include "core/opc_gate.h"
#include "core/stream_engine.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace {

std::atomic<long> allocations{0};

constexpr int chunk = 833333;     // 1/60 s at 50e6
constexpr int chunksPerRun = 60;  // one second of output per iteration

// Pass-through like the impairment panel with nothing enabled, or adding the noise record as it
// does with AWGN on; ends the run after a second of output, so that each iteration times
// exactly 50e6 samples.
class CountingStage : public ImpairmentStage {
public:
  StreamEngine* engine = nullptr;
  ImpairmentNoise* noise = nullptr;
  int chunks = 0;
  long allocationsAtSecondChunk = 0;

  double frequencyOffset() const override { return 0; }
  double sampleRateFactor() const override { return 1; }
  bool lowSpurMode() const override { return true; }
  void process(const Sample* in, Sample* out, int count) override {
    if (noise)
      noise->add(in, out, count);
    else
      std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
    if (++chunks == 2) allocationsAtSecondChunk = allocations.load();
    if (chunks == chunksPerRun) engine->streaming = false;
  }
};

void BM_MemcpyChunk(benchmark::State& state) {
  std::vector<Sample> from(chunk, Sample(1, 0)), to(chunk);
  for (auto _ : state) {
    for (int i = 0; i < chunksPerRun; ++i)
      std::memcpy(to.data(), from.data(), sizeof(Sample) * chunk);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * chunk * int64_t(chunksPerRun));
  state.SetBytesProcessed(state.iterations() * chunk * int64_t(chunksPerRun) *
                          int64_t(sizeof(Sample)));
}
BENCHMARK(BM_MemcpyChunk)->Unit(benchmark::kMillisecond)->UseRealTime();

// Takes the tap's snapshots every 50 ms on a thread of its own, as the shown monitor does.
class MonitorReader {
public:
  explicit MonitorReader(OutputTap& tap) : tap(tap) {
    tap.setEnabled(true);
    reader = std::thread([this] {
      while (!done.load()) {
        if (this->tap.take()) taken.fetch_add(1);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      }
    });
  }
  ~MonitorReader() {
    done = true;
    reader.join();
    tap.setEnabled(false);
  }
  std::atomic<long> taken{0};

private:
  OutputTap& tap;
  std::atomic<bool> done{false};
  std::thread reader;
};

// Argument awgn 1: AWGN on and the waveform through a 65-tap channel filter at build, as a mode
// that honours the impairments plays it. Argument monitor 1: the output monitor shown.
void BM_SubmitWaveformSteady(benchmark::State& state) {
  Device device;
  OpcGate gate;
  StreamEngine engine(&device, &gate);
  CountingStage stage;
  stage.engine = &engine;
  ImpairmentNoise noise;
  if (state.range(0)) stage.noise = &noise;
  engine.setImpairments(&stage);
  device.setImpairments(&stage);
  if (!device.open(21000001)) {
    state.SkipWithError("no simulated device");
    return;
  }
  device.retune(TuneRecord{1e9, -20, 50e6, 0, 0});
  std::vector<Sample> carrier(1000000, Sample(1, 0));
  if (state.range(0)) {
    applyCircularFir(std::vector<Sample>(65, Sample(1.0f / 65, 0)), carrier.data(), 1000000);
    noise.prepare(0.0, 50e6, 20.0, 1e7);
  }
  long steadyAllocations = 0;
  std::unique_ptr<MonitorReader> monitor;
  if (state.range(1)) monitor = std::make_unique<MonitorReader>(device.outputTap());
  for (auto _ : state) {
    stage.chunks = 0;
    engine.streaming = true;
    engine.submitWaveform(carrier.data(), static_cast<int64_t>(carrier.size()), false);
    steadyAllocations += allocations.load() - stage.allocationsAtSecondChunk;
  }
  device.abort();
  device.close();
  state.SetItemsProcessed(state.iterations() * chunk * int64_t(chunksPerRun));
  state.SetBytesProcessed(state.iterations() * chunk * int64_t(chunksPerRun) *
                          int64_t(sizeof(Sample)));
  state.counters["allocs_per_chunk"] =
      double(steadyAllocations) / double(state.iterations() * (chunksPerRun - 2));
  if (monitor) state.counters["snapshots"] = double(monitor->taken.load());
}
BENCHMARK(BM_SubmitWaveformSteady)
    ->ArgNames({"awgn", "monitor"})
    ->Args({0, 0})
    ->Args({0, 1})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

// Counts every allocation in the process, the device library's included.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

int main(int argc, char** argv) {
  setenv("KRT40_SIM_SPEED", "0", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_DEVICES", "21000001", 1);
  unsetenv("KRT40_SIM_RECORD");
  unsetenv("KRT40_SIM_EVENTS");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
