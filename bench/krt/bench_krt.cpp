// SPDX-License-Identifier: MIT
// Throughput of krtSubmitIQ at KRT40_SIM_SPEED=0, with and without recording, against memcpy.
//
// The streaming loop hands the device 833,333 samples (1/60 s at 50e6) a call. Unpaced, a
// submit without recording only accounts the samples; with recording it copies them and a
// writer thread puts them into the SigMF data file, so the recording case runs at the speed
// of the disk (page cache) and memcpy of the same bytes is the yardstick for both.
//
// The configuration is read once per process, so both cases share one: the recording belongs
// to the first session opened while no other holds it (see krt/sim_library.h). main() opens
// device 1 (which takes the recording) and then device 2 (which therefore is not recorded),
// and closes device 1; the recording case opens device 1 again for each iteration and closes
// it at the end of the iteration, which waits until the writer has put everything on disk.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "krt/krt_api.h"

namespace {

constexpr int kChunk = 833333;
constexpr int kChunksPerRecording = 12;  // 10e6 samples, 80 MB a recorded iteration
int plainHandle = -1;
std::string recordPrefix;

const std::vector<float>& chunk() {
  static const std::vector<float> iq = [] {
    std::vector<float> v(2 * static_cast<size_t>(kChunk));
    for (size_t i = 0; i < v.size(); ++i) v[i] = static_cast<float>(i % 1000) * 1e-3f;
    return v;
  }();
  return iq;
}

void BM_Memcpy(benchmark::State& state) {
  const std::vector<float>& src = chunk();
  std::vector<float> dst(src.size(), 1.0f);
  for (auto _ : state) {
    std::memcpy(dst.data(), src.data(), src.size() * sizeof(float));
    benchmark::DoNotOptimize(dst.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
  state.SetBytesProcessed(state.iterations() * kChunk * 8);
}
BENCHMARK(BM_Memcpy)->UseRealTime();

void BM_SubmitIQ(benchmark::State& state) {
  const std::vector<float>& iq = chunk();
  for (auto _ : state) {
    if (krtSubmitIQ(plainHandle, iq.data(), kChunk) != 0) state.SkipWithError("krtSubmitIQ failed");
  }
  state.SetItemsProcessed(state.iterations() * kChunk);
  state.SetBytesProcessed(state.iterations() * kChunk * 8);
}
BENCHMARK(BM_SubmitIQ)->UseRealTime();

void BM_SubmitIQRecording(benchmark::State& state) {
  const std::vector<float>& iq = chunk();
  for (auto _ : state) {
    state.PauseTiming();
    int h = -1;
    if (krtOpenDeviceBySerial(&h, 1) != 0) {
      state.SkipWithError("open failed");
      break;
    }
    state.ResumeTiming();
    for (int i = 0; i < kChunksPerRecording; ++i) {
      if (krtSubmitIQ(h, iq.data(), kChunk) != 0) state.SkipWithError("krtSubmitIQ failed");
    }
    krtCloseDevice(h);  // returns when the data is written
  }
  state.SetItemsProcessed(state.iterations() * kChunk * kChunksPerRecording);
  state.SetBytesProcessed(state.iterations() * kChunk * kChunksPerRecording * 8);
}
BENCHMARK(BM_SubmitIQRecording)->UseRealTime()->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  char dir[] = "/tmp/bench_krt_XXXXXX";
  if (!mkdtemp(dir)) {
    std::perror("mkdtemp");
    return 1;
  }
  recordPrefix = std::string(dir) + "/recording";
  setenv("KRT40_SIM_SPEED", "0", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_DEVICES", "1,2", 1);
  setenv("KRT40_SIM_RECORD", recordPrefix.c_str(), 1);
  setenv("KRT40_SIM_RECORD_MAX", "1000000000000", 1);
  unsetenv("KRT40_SIM_EVENTS");

  int recorded = -1;
  if (krtOpenDeviceBySerial(&recorded, 1) != 0 || krtOpenDeviceBySerial(&plainHandle, 2) != 0) {
    std::fprintf(stderr, "bench_krt: cannot open the simulated devices\n");
    return 1;
  }
  krtSetSampleRate(plainHandle, 50e6);
  krtCloseDevice(recorded);

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();

  krtCloseDevice(plainHandle);
  std::remove((recordPrefix + ".sigmf-data").c_str());
  std::remove((recordPrefix + ".sigmf-meta").c_str());
  rmdir(dir);
  return 0;
}
