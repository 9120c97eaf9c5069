// SPDX-License-Identifier: MIT
// The steady submit loop at 50e6 samples a second into the fake SoapySDR transmitter of the
// tests, against the same loop into the unpaced simulated device: what the backend adds.
//
// Neither device paces nor records, so each iteration times the loop itself: the impairment
// copy, the library call and, for SoapySDR, the write into the module. Argument 2 plays at a
// level below the module's gain range, which costs the one scaled copy the backend makes.
#include "core/device.h"
#include "core/impairment_stage.h"
#include "core/opc_gate.h"
#include "core/stream_engine.h"
#include "krt/krt_ext.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int chunk = 833333;     // 1/60 s at 50e6
constexpr int chunksPerRun = 60;  // one second of output per iteration

// The impairment panel with nothing enabled; ends the run after a second of output.
class PassThrough : public ImpairmentStage {
public:
  StreamEngine* engine = nullptr;
  int chunks = 0;
  double frequencyOffset() const override { return 0; }
  double sampleRateFactor() const override { return 1; }
  bool lowSpurMode() const override { return false; }
  void process(const Sample* in, Sample* out, int count) override {
    std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
    if (++chunks == chunksPerRun) engine->streaming = false;
  }
};

// The first device the backend lists, or -1.
int firstSerial(int backend) {
  krtSelectBackend(backend);
  int serials[8];
  int count = 8;
  return krtGetDeviceList(serials, &count) == 0 && count > 0 ? serials[0] : -1;
}

// Argument: 0 simulated, 1 SoapySDR within the gain range, 2 SoapySDR below it.
void BM_SubmitLoopByBackend(benchmark::State& state) {
  const int backend = state.range(0) == 0 ? KRT_BACKEND_SIMULATED : KRT_BACKEND_SOAPYSDR;
  Device device;
  OpcGate gate;
  StreamEngine engine(&device, &gate);
  PassThrough stage;
  stage.engine = &engine;
  engine.setImpairments(&stage);
  device.setImpairments(&stage);
  const int serial = firstSerial(backend);
  if (serial < 0 || !device.open(serial)) {
    state.SkipWithError("no device on this backend");
    return;
  }
  // The fake's gain runs 0 to 60 dB at a calibration of 0: -20 dBm needs a digital scale.
  device.retune(TuneRecord{1e9, state.range(0) == 2 ? -20.0 : 0.0, 40e6, 0, 0});
  std::vector<Sample> carrier(1000000, Sample(1, 0));
  for (auto _ : state) {
    stage.chunks = 0;
    engine.streaming = true;
    engine.submitWaveform(carrier.data(), static_cast<int64_t>(carrier.size()), false);
  }
  device.abort();
  device.close();
  state.SetItemsProcessed(state.iterations() * chunk * int64_t(chunksPerRun));
}
BENCHMARK(BM_SubmitLoopByBackend)
    ->ArgName("backend")
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  setenv("KRT40_SIM_SPEED", "0", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_DEVICES", "21000001", 1);
  setenv("SOAPY_SDR_PLUGIN_PATH", KRT40_FAKE_SOAPY_DIR, 1);
  unsetenv("KRT40_SIM_RECORD");
  unsetenv("KRT40_SIM_EVENTS");
  unsetenv("KRT40_FAKE_SOAPY_RECORD");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
