// SPDX-License-Identifier: MIT
// Three raw 16-bit files streamed back to back at 50e6 samples a second (200 MB/s of reads)
// against the real-time simulated device, straight from the disk: the underruns the device
// counted, the allocations of the steady loop and the peak memory beside the file size, and a
// plain sequential read of the same files as the disk's own rate.
#include "arb/streaming/streaming_player.h"
#include "core/device.h"
#include "core/opc_gate.h"
#include "core/stream_engine.h"
#include "core/tune_record.h"
#include "modes/mode_host.h"

#include <QString>

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr double rate = 50e6;
// Shorter than one pass over the larger files (4 s), so that every block of that case is read
// from the disk.
constexpr auto playTime = std::chrono::milliseconds(3500);
constexpr int fileCount = 3;

// ---- Heap accounting, every allocation of the process (the device library's included) ----

std::atomic<long> liveBytes{0}, peakBytes{0};
std::atomic<long> loopAllocations{0}, deviceAllocations{0}, otherAllocations{0};
std::atomic<bool> steady{false};
thread_local bool onStreamingThread = false;
thread_local bool inDevice = false;

// Marks a call into the device library: its events log allocates per call, the loop must not.
struct DeviceCall {
  DeviceCall() { inDevice = true; }
  ~DeviceCall() { inDevice = false; }
};

void noteAllocation(long bytes) {
  const long live = liveBytes.fetch_add(bytes, std::memory_order_relaxed) + bytes;
  long peak = peakBytes.load(std::memory_order_relaxed);
  while (live > peak && !peakBytes.compare_exchange_weak(peak, live)) {
  }
  if (onStreamingThread)
    (inDevice ? deviceAllocations : loopAllocations)++;
  else if (steady.load(std::memory_order_relaxed))
    otherAllocations++;  // the read-ahead and the device's own player
}

// Resident set in bytes: "VmRSS" now or "VmHWM", its peak since the last reset.
long statusBytes(const char* key) {
  std::ifstream in("/proc/self/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key) + 1) * 1024;
  return 0;
}

void resetPeakRss() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

// ---- The files ----

std::string tempDir, eventsPath;

// Three files of `samples` samples each, made once a run and synced, so that eviction works.
const std::vector<std::string>& filesOf(int64_t samples) {
  static std::map<int64_t, std::vector<std::string>> made;
  std::vector<std::string>& paths = made[samples];
  if (!paths.empty()) return paths;
  std::vector<int16_t> chunk(1 << 22);
  for (size_t k = 0; k < chunk.size(); ++k) chunk[k] = static_cast<int16_t>(k * 7919);
  for (int f = 0; f < fileCount; ++f) {
    const std::string path = tempDir + "/s" + std::to_string(samples) + "_" +
                             std::to_string(f) + ".bin";
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    for (int64_t left = samples * 2; left > 0;) {
      const size_t n = static_cast<size_t>(std::min<int64_t>(left, int64_t(chunk.size())));
      if (::write(fd, chunk.data(), n * 2) != static_cast<ssize_t>(n * 2)) break;
      left -= static_cast<int64_t>(n);
    }
    ::fsync(fd);
    ::close(fd);
    paths.push_back(path);
  }
  return paths;
}

// Drops the files from the page cache, so that the next reads hit the disk.
void evict(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    ::fsync(fd);
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    ::close(fd);
  }
}

// Percentage of the files' pages in the page cache.
double residentPercent(const std::vector<std::string>& paths) {
  const long page = ::sysconf(_SC_PAGESIZE);
  double resident = 0, total = 0;
  for (const std::string& path : paths) {
    const int fd = ::open(path.c_str(), O_RDONLY);
    struct stat st {};
    ::fstat(fd, &st);
    const size_t pages = static_cast<size_t>((st.st_size + page - 1) / page);
    void* map = ::mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_SHARED, fd, 0);
    std::vector<unsigned char> in(pages);
    if (map != MAP_FAILED && ::mincore(map, static_cast<size_t>(st.st_size), in.data()) == 0)
      for (unsigned char c : in) resident += c & 1;
    if (map != MAP_FAILED) ::munmap(map, static_cast<size_t>(st.st_size));
    total += double(pages);
    ::close(fd);
  }
  return total > 0 ? resident * 100.0 / total : 0.0;
}

// ---- The instrument around the loop: the device session without the window ----

class BenchHost : public ModeHost {
public:
  BenchHost(Device& device, StreamEngine& engine, OpcGate& gate)
      : device(device), engine(engine), gate(gate) {}

  long submits = 0;
  // Longest time from a submit's return to the next submit: the wait for the read and the
  // block's work, against the queue's 100 ms.
  double worstGapMs = 0, totalGapMs = 0;
  long loopAllocationsAtSecondSubmit = 0, deviceAllocationsAtSecondSubmit = 0;
  double submitted = 0;

  double frequency() const override { return 1e9; }
  double level() const override { return -20.0; }
  const std::atomic<bool>& runFlag() const override { return engine.streaming; }
  bool takeTriggerRequest() override { return false; }
  void retune(double sampleRateHz, double levelOffsetDb) override {
    device.retune(TuneRecord{frequency(), level() - levelOffsetDb, sampleRateHz, 0.0, 0.0});
  }
  void submitWaveform(const Sample* samples, int64_t length, bool singleShot) override {
    engine.submitWaveform(samples, length, singleShot);
  }
  void applyChannelFilter(Sample*, int) override {}
  void prepareNoise(double, double) override {}
  // The impairment panel with nothing enabled.
  void processImpairments(const Sample* in, Sample* out, int count) override {
    if (in != out) std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
  }
  void setDeviceSampleRate(double hz) override { device.setSampleRate(hz); }
  void setDeviceFrequency(double hz) override { device.setFrequency(hz); }
  void setDeviceLevel(double dbm) override { device.setLevel(dbm); }
  void submitIQ(const Sample* samples, int count) override {
    if (++submits == 2) {
      steady = true;
      loopAllocationsAtSecondSubmit = loopAllocations.load();
      deviceAllocationsAtSecondSubmit = deviceAllocations.load();
    }
    submitted += count;
    const auto now = std::chrono::steady_clock::now();
    if (submits > 1) {
      const double gap = std::chrono::duration<double, std::milli>(now - lastReturn).count();
      worstGapMs = std::max(worstGapMs, gap);
      totalGapMs += gap;
    }
    DeviceCall call;
    device.submitIQ(samples, count);
    lastReturn = std::chrono::steady_clock::now();
  }
  void flushAndWait() override { device.flushAndWait(); }
  void submitTrigger() override { device.submitTrigger(); }
  bool connectionLost() override {
    DeviceCall call;
    return device.connectionFailed();
  }
  void setOutputReady() override { gate.setOutputReady(true); }
  void setStatusText(const QString&) override {}
  void showProgress() override {}
  void setProgress(int) override {}
  void hideProgress() override {}
  int currentMode() const override { return 19; }
  void selectMode(int) override {}

private:
  std::chrono::steady_clock::time_point lastReturn;
  Device& device;
  StreamEngine& engine;
  OpcGate& gate;
};

std::streamoff logSize() {
  std::ifstream in(eventsPath, std::ios::ate);
  return in ? static_cast<std::streamoff>(in.tellg()) : 0;
}

long underrunsSince(std::streamoff from) {
  std::ifstream in(eventsPath);
  in.seekg(from);
  std::string line;
  long underruns = 0;
  while (std::getline(in, line))
    if (line.find("\"device\"") != std::string::npos &&
        line.find("underrun") != std::string::npos)
      ++underruns;
  return underruns;
}

// ---- Benchmarks; argument: samples a file ----

// Baseline: the disk's own sequential rate, the three files read cold in blocks of 40 ms.
void BM_DiskReadCold(benchmark::State& state) {
  const std::vector<std::string>& paths = filesOf(state.range(0));
  std::vector<char> buffer(static_cast<size_t>(rate / 25.0) * 4);
  int64_t bytes = 0;
  double resident = 0;
  for (auto _ : state) {
    state.PauseTiming();
    evict(paths);
    resident += residentPercent(paths);
    state.ResumeTiming();
    for (const std::string& path : paths) {
      const int fd = ::open(path.c_str(), O_RDONLY);
      for (ssize_t n; (n = ::read(fd, buffer.data(), buffer.size())) > 0;) bytes += n;
      ::close(fd);
    }
  }
  state.SetBytesProcessed(bytes);
  state.counters["cached_pct_at_start"] = resident / double(state.iterations());
  state.counters["needed_MBps"] = rate * 4 / 1e6;
}
BENCHMARK(BM_DiskReadCold)
    ->ArgName("samples_per_file")
    ->Arg(8 << 20)
    ->Arg(64 << 20)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The streaming mode's loop over the files, cold, for a fixed time at real-time speed.
void BM_StreamThreeFiles50M(benchmark::State& state) {
  const std::vector<std::string>& paths = filesOf(state.range(0));
  std::vector<StreamFileEntry> entries;
  for (const std::string& path : paths)
    entries.push_back({int(entries.size()) + 1, QString::fromStdString(path), 2, state.range(0)});
  Device device;
  OpcGate gate;
  StreamEngine engine(&device, &gate);
  BenchHost host(device, engine, gate);
  if (!device.open(21000001)) {
    state.SkipWithError("no simulated device");
    return;
  }
  const std::streamoff from = logSize();
  evict(paths);
  const double resident = residentPercent(paths);
  ::malloc_trim(0);  // what earlier runs freed would hide this one's growth
  const long rssBefore = statusBytes("VmRSS:");
  resetPeakRss();
  const long heapBefore = liveBytes.load();
  peakBytes.store(heapBefore);
  bool played = false;
  std::chrono::duration<double> elapsed{};
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    engine.startStreaming([&] {
      onStreamingThread = true;
      played = playStreamingFiles(entries, rate, 100.0, host, [](double) {});
      steady = false;
      onStreamingThread = false;
      device.abort();
    });
    std::this_thread::sleep_for(playTime);
    engine.stopStreaming();
    elapsed = std::chrono::steady_clock::now() - start;
  }
  const long peakHeap = peakBytes.load() - heapBefore;
  const long peakRss = statusBytes("VmHWM:") - rssBefore;
  device.close();
  if (!played) state.SkipWithError("nothing played");
  state.counters["underruns"] = double(underrunsSince(from));
  state.counters["samples_per_s"] = host.submitted / elapsed.count();
  state.counters["file_MB"] = double(state.range(0)) * 4 / 1e6;
  state.counters["cached_pct_at_start"] = resident;
  state.counters["loop_allocs"] =
      double(loopAllocations.load() - host.loopAllocationsAtSecondSubmit);
  state.counters["other_thread_allocs"] = double(otherAllocations.exchange(0));
  state.counters["device_allocs"] =
      double(deviceAllocations.load() - host.deviceAllocationsAtSecondSubmit);
  state.counters["worst_block_ms"] = host.worstGapMs;
  state.counters["mean_block_ms"] = host.totalGapMs / double(std::max(1L, host.submits - 1));
  state.counters["peak_heap_MB"] = double(peakHeap) / 1e6;
  state.counters["peak_rss_growth_MB"] = double(peakRss) / 1e6;
  state.SetBytesProcessed(int64_t(host.submitted) * 4);
}
BENCHMARK(BM_StreamThreeFiles50M)
    ->ArgName("samples_per_file")
    ->Arg(8 << 20)
    ->Arg(64 << 20)
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

}  // namespace

#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
  void* p = std::malloc(size ? size : 1);
  if (!p) throw std::bad_alloc();
  noteAllocation(long(malloc_usable_size(p)));
  return p;
}
void operator delete(void* p) noexcept {
  if (p) liveBytes.fetch_sub(long(malloc_usable_size(p)), std::memory_order_relaxed);
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

int main(int argc, char** argv) {
  char pattern[] = "/tmp/krt40-bench-XXXXXX";
  tempDir = mkdtemp(pattern);
  eventsPath = tempDir + "/events.jsonl";
  setenv("KRT40_SIM_SPEED", "1", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_DEVICES", "21000001", 1);
  setenv("KRT40_SIM_EVENTS", eventsPath.c_str(), 1);
  unsetenv("KRT40_SIM_RECORD");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (int64_t samples : {int64_t(8 << 20), int64_t(64 << 20)})
    for (int f = 0; f < fileCount; ++f)
      std::remove((tempDir + "/s" + std::to_string(samples) + "_" + std::to_string(f) + ".bin")
                      .c_str());
  std::remove(eventsPath.c_str());
  ::rmdir(tempDir.c_str());
  return 0;
}
