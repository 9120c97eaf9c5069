// SPDX-License-Identifier: MIT
// Pulse and ramp sweep builds against plain per-definition builds in the same run.
//
// The output is silent while a build runs, so the time of one build is what a user hears at
// each change. The largest cases are a pulse with a 1 s period (4e7 samples, 320 MB) and a
// ramp sweep of 1 s (5e7 samples, 400 MB). Each case also reports the peak memory of one
// build, measured in a fresh process (this program started again with --measure=<case>):
// peak_rss_MB is the growth of the resident high-water mark (VmHWM), peak_vm_MB that of the
// address space (VmPeak).
#include "modes/pulse/pulse_builder.h"
#include "modes/ramp_sweep/ramp_sweep_builder.h"
#include "tests/support/ramp_reference.h"

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr double pi = 3.14159265358979323846;

// ---- Baselines: the definitions written out plainly ----------------------------------------

std::vector<Sample> baselinePulse(double width, double period) {
  const int64_t n = int64_t(width * 4e7);
  const double rate = 1.0 / (width / double(n));
  const int64_t length = int64_t(rate * period);
  std::vector<Sample> out(size_t(length), Sample(0, 0));
  const int r = n + 2 < length ? 2 : 0;
  for (int64_t i = 0; i < std::min(n + r, length); ++i) out[size_t(i)] = Sample(1, 0);
  for (int k = 0; k < r; ++k) {
    const double w = 0.5 * std::cos(double(k) / r * pi - pi) + 0.5;
    out[size_t(k)] *= float(w);
    out[size_t(n + r - 1 - k)] *= float(w);
  }
  return out;
}

// ---- Cases ----------------------------------------------------------------------------------

struct Case {
  std::string name;
  std::function<const void*()>
      build;  // returns the first sample; the result lives until the next call
};

// Holds the last result, so that the buffer is freed outside the timed build.
LongWaveform lastWave;
std::vector<Sample> lastVector;

const void* keep(LongWaveform wave) {
  lastWave = std::move(wave);
  return lastWave.samples.data();
}
const void* keep(std::vector<Sample> v) {
  lastVector = std::move(v);
  return lastVector.data();
}

const std::vector<Case>& cases() {
  static const std::vector<Case> all = {
      {"pulse_1ms_in_1s",
       [] {
         return keep(buildPulse({1e-3, 1.0, TriggerContinuous}));
       }},
      {"pulse_500ms_in_1s",
       [] {
         return keep(buildPulse({0.5, 1.0, TriggerContinuous}));
       }},
      {"pulse_1s_in_1s",
       [] {
         return keep(buildPulse({1.0, 1.0, TriggerContinuous}));
       }},
      {"baseline_pulse_1ms_in_1s", [] { return keep(baselinePulse(1e-3, 1.0)); }},
      {"baseline_pulse_500ms_in_1s", [] { return keep(baselinePulse(0.5, 1.0)); }},
      {"baseline_pulse_1s_in_1s", [] { return keep(baselinePulse(1.0, 1.0)); }},
      {"ramp_1s_in_1s",
       [] {
         return keep(buildRampSweep({2e7, 1.0, 1.0, TriggerContinuous}));
       }},
      {"ramp_500ms_in_1s",
       [] {
         return keep(buildRampSweep({2e7, 0.5, 1.0, TriggerContinuous}));
       }},
      {"ramp_100ms_in_100ms",
       [] {
         return keep(buildRampSweep({2e7, 0.1, 0.1, TriggerContinuous}));
       }},
      {"baseline_ramp_1s_in_1s", [] { return keep(referenceRamp(2e7, 1.0, 1.0)); }},
      {"baseline_ramp_500ms_in_1s", [] { return keep(referenceRamp(2e7, 0.5, 1.0)); }},
      {"baseline_ramp_100ms_in_100ms", [] { return keep(referenceRamp(2e7, 0.1, 0.1)); }},
  };
  return all;
}

void release() {
  lastWave = LongWaveform();
  lastVector = std::vector<Sample>();
}

// ---- Peak memory in a fresh process ---------------------------------------------------------

std::map<std::string, long> procStatus() {
  std::map<std::string, long> kb;
  std::ifstream in("/proc/self/status");
  std::string key;
  long value = 0;
  std::string unit;
  while (in >> key) {
    if (key == "VmPeak:" || key == "VmSize:" || key == "VmHWM:" || key == "VmRSS:") {
      in >> value >> unit;
      kb[key] = value;
    }
    in.ignore(1 << 12, '\n');
  }
  return kb;
}

// Runs one build and prints the growth of the resident and address-space peaks, in bytes.
int measure(const std::string& name) {
  for (const Case& c : cases()) {
    if (c.name != name) continue;
    std::ofstream("/proc/self/clear_refs") << "5";  // resets VmHWM to the present VmRSS
    const auto before = procStatus();
    benchmark::DoNotOptimize(c.build());
    const auto after = procStatus();
    std::printf("%ld %ld\n", (after.at("VmHWM:") - before.at("VmRSS:")) * 1024,
                (after.at("VmPeak:") - before.at("VmSize:")) * 1024);
    return 0;
  }
  return 1;
}

std::pair<double, double> peakInFreshProcess(const std::string& name) {
  char self[4096] = {};
  if (readlink("/proc/self/exe", self, sizeof self - 1) < 0) return {-1, -1};
  const std::string command = std::string("'") + self + "' --measure=" + name;
  FILE* child = popen(command.c_str(), "r");
  long rss = -1, vm = -1;
  if (child) {
    if (std::fscanf(child, "%ld %ld", &rss, &vm) != 2) rss = vm = -1;
    pclose(child);
  }
  return {rss / 1e6, vm / 1e6};
}

void BM_Build(benchmark::State& state, const Case* c) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(c->build());
    benchmark::ClobberMemory();
    state.PauseTiming();
    release();
    state.ResumeTiming();
  }
  const auto [rss, vm] = peakInFreshProcess(c->name);
  state.counters["peak_rss_MB"] = rss;
  state.counters["peak_vm_MB"] = vm;
}

// The first touch of memory the machine has never used can cost several times the usual
// page fault (a virtual machine backs its memory lazily); touch a builder-sized block once so
// that every case meets the memory in the same state.
void warmUpMemory() {
  std::vector<Sample> block(size_t(1) << 26, Sample(1, 0));
  benchmark::DoNotOptimize(block.data());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strncmp(argv[1], "--measure=", 10) == 0) return measure(argv[1] + 10);
  warmUpMemory();
  for (const Case& c : cases())
    benchmark::RegisterBenchmark(("BM_Build/" + c.name).c_str(), BM_Build, &c)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime()
        ->MinTime(1.0);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
