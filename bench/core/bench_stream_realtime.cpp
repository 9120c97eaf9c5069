// SPDX-License-Identifier: MIT
// Ten seconds of CW at 50e6 samples a second against the real-time simulated device, the first
// two of them recorded to disk: the stream must keep the device's queue fed with no underrun,
// and the recording must not slow it.
#include "core/device.h"
#include "core/impairment_stage.h"
#include "core/opc_gate.h"
#include "core/stream_engine.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

namespace {

std::string eventsPath;

class PassThrough : public ImpairmentStage {
public:
  double frequencyOffset() const override { return 0; }
  double sampleRateFactor() const override { return 1; }
  bool lowSpurMode() const override { return true; }
  void process(const Sample* in, Sample* out, int count) override {
    std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
  }
};

std::streamoff logSize() {
  std::ifstream in(eventsPath, std::ios::ate);
  return in ? static_cast<std::streamoff>(in.tellg()) : 0;
}

// Underruns and submitted samples since `from`, as the device's events log tells them.
void countEvents(std::streamoff from, long& underruns, double& samples) {
  std::ifstream in(eventsPath);
  in.seekg(from);
  std::string line;
  while (std::getline(in, line)) {
    if (line.find("\"fn\":\"device\"") != std::string::npos ||
        line.find("\"fn\": \"device\"") != std::string::npos) {
      if (line.find("underrun") != std::string::npos) ++underruns;
    } else if (line.find("krtSubmitIQ") != std::string::npos) {
      auto at = line.find("\"count\"");
      if (at != std::string::npos) samples += std::atof(line.c_str() + line.find(':', at) + 1);
    }
  }
}

void BM_CarrierRealTime10s(benchmark::State& state) {
  Device device;
  OpcGate gate;
  StreamEngine engine(&device, &gate);
  PassThrough stage;
  engine.setImpairments(&stage);
  device.setImpairments(&stage);
  if (!device.open(21000001)) {
    state.SkipWithError("no simulated device");
    return;
  }
  const std::streamoff from = logSize();
  for (auto _ : state) {
    engine.startStreaming([&] {
      engine.generateCW(1e9, -20);
      device.abort();
    });
    std::this_thread::sleep_for(std::chrono::seconds(10));
    engine.stopStreaming();
  }
  device.close();
  long underruns = 0;
  double samples = 0;
  countEvents(from, underruns, samples);
  state.counters["underruns"] = double(underruns);
  state.counters["samples_per_s"] = samples / 10.0;
}
BENCHMARK(BM_CarrierRealTime10s)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  char pattern[] = "/tmp/krt40-bench-XXXXXX";
  eventsPath = std::string(mkdtemp(pattern)) + "/events.jsonl";
  setenv("KRT40_SIM_SPEED", "1", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_DEVICES", "21000001", 1);
  setenv("KRT40_SIM_EVENTS", eventsPath.c_str(), 1);
  const std::string recording = eventsPath.substr(0, eventsPath.rfind('/')) + "/recording";
  setenv("KRT40_SIM_RECORD", recording.c_str(), 1);
  setenv("KRT40_SIM_RECORD_MAX", "100000000", 1);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::remove((recording + ".sigmf-data").c_str());
  std::remove((recording + ".sigmf-meta").c_str());
  std::remove(eventsPath.c_str());
  return 0;
}
