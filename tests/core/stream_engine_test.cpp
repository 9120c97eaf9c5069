// SPDX-License-Identifier: MIT
// The submit routine and the off and CW generators against the simulated device.
#include "core/device.h"
#include "core/impairment_stage.h"
#include "core/opc_gate.h"
#include "core/stream_engine.h"
#include "krt/krt_scenario.h"
#include "support/events_log.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

// Pass-through stage that keeps what it was given, so tests see exactly what was submitted.
class RecordingStage : public ImpairmentStage {
public:
  double offsetHz = 0.0;
  double rateFactor = 1.0;
  bool lowSpur = false;
  size_t keepAtMost = 2000000;
  OpcGate* gate = nullptr;

  double frequencyOffset() const override { return offsetHz; }
  double sampleRateFactor() const override { return rateFactor; }
  bool lowSpurMode() const override { return lowSpur; }

  void process(const Sample* in, Sample* out, int count) override {
    std::lock_guard<std::mutex> lock(mutex);
    for (int i = 0; i < count; ++i) out[i] = in[i];
    if (samples.size() < keepAtMost) samples.insert(samples.end(), in, in + count);
    chunkCounts.push_back(count);
    readyBefore.push_back(gate && gate->isOutputReady());
  }

  size_t chunks() {
    std::lock_guard<std::mutex> lock(mutex);
    return chunkCounts.size();
  }

  std::mutex mutex;
  std::vector<Sample> samples;
  std::vector<int> chunkCounts;
  std::vector<bool> readyBefore;
};

class StreamEngineTest : public ::testing::Test {
protected:
  // One simulated device, unpaced, with an events log and an unplug file, the same for every
  // test of this process.
  void SetUp() override {
    static const bool configured =
        krttest::useEnvironment({{"KRT40_SIM_SPEED", "0"},
                                 {"KRT40_SIM_EVENTS", krttest::scratch("events.jsonl")},
                                 {"KRT40_SIM_UNPLUG_FILE", unplugPath()}});
    ASSERT_TRUE(configured);
    ASSERT_TRUE(device.open(21000001));
    device.setImpairments(&stage);
    engine.setImpairments(&stage);
    stage.gate = &gate;
    log.mark();
  }

  void TearDown() override {
    stopWorker();
    device.close();
    std::remove(unplugPath().c_str());
  }

  static std::string unplugPath() { return krttest::scratch("unplug"); }

  // Runs `body` on a streaming thread with the run flag set.
  void startWorker(std::function<void()> body) {
    engine.streaming = true;
    worker = std::thread(std::move(body));
  }

  void stopWorker() {
    engine.streaming = false;
    if (worker.joinable()) worker.join();
  }

  template <typename Pred>
  bool waitFor(Pred pred, std::chrono::milliseconds limit = 5000ms) {
    auto end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::sleep_for(2ms);
    }
    return true;
  }

  Device device;
  OpcGate gate;
  RecordingStage stage;
  StreamEngine engine{&device, &gate};
  EventsLog log{krttest::scratch("events.jsonl")};
  std::thread worker;
};

TEST_F(StreamEngineTest, RetuneCorrectsRateAndFrequencyInTheDeviceOrder) {
  stage.offsetHz = 1234.0;
  stage.rateFactor = 1.0 + 100e-6;
  stage.lowSpur = true;
  device.retune(TuneRecord{2.4e9, -33.5, 20e6, 0, 0});

  auto seq = log.sequence();
  ASSERT_EQ(seq, (std::vector<std::string>{"krtSetDigitalTuning", "krtSetSampleRate",
                                           "krtSetFrequency", "krtSetLevel"}));
  auto events = log.events();
  EXPECT_EQ(events[0]["args"]["enabled"], 1);
  EXPECT_DOUBLE_EQ(events[1]["args"]["sampleRate"].get<double>(), 20e6 * (1.0 + 100e-6));
  EXPECT_DOUBLE_EQ(events[2]["args"]["frequency"].get<double>(), 2.4e9 + 1234.0);
  EXPECT_DOUBLE_EQ(events[3]["args"]["level"].get<double>(), -33.5);
  // The record keeps the rate as given, so chunk lengths ignore the rate error.
  EXPECT_DOUBLE_EQ(device.tune().sampleRate, 20e6);
  EXPECT_DOUBLE_EQ(device.tune().frequency, 2.4e9);
}

// Continuous replay: every chunk is 1/60 s at the tuned rate and the waveform repeats without
// a seam, whether it is shorter or longer than a chunk.
TEST_F(StreamEngineTest, ContinuousReplayIsSeamless) {
  struct Case {
    int64_t length;
    double rate;
    int chunk;
  };
  // Below 60 samples a second the chunks are empty until the loop is stopped; above the
  // device's range they follow the rate it clamps to, 54e6.
  for (Case c : {Case{7, 6e6, 100000}, Case{250001, 6e6, 100000}, Case{100000, 6e6, 100000},
                 Case{10, 59, 0}, Case{7, 1e11, 900000}}) {
    SCOPED_TRACE(c.length);
    stage.samples.clear();
    stage.chunkCounts.clear();
    device.retune(TuneRecord{1e9, -20, c.rate, 0, 0});
    std::vector<Sample> wave(static_cast<size_t>(c.length));
    for (size_t k = 0; k < wave.size(); ++k) wave[k] = Sample(float(k), -float(k) - 0.5f);
    startWorker([&] { engine.submitWaveform(wave.data(), c.length, false); });
    ASSERT_TRUE(waitFor([&] { return stage.chunks() >= 6; }));
    stopWorker();
    for (int count : stage.chunkCounts) EXPECT_EQ(count, c.chunk);
    for (size_t k = 0; k < stage.samples.size(); ++k)
      ASSERT_EQ(stage.samples[k], wave[k % wave.size()]) << "sample " << k;
  }
}

TEST_F(StreamEngineTest, OutputCountsAsReadyAfterATenthOfASecond) {
  device.retune(TuneRecord{1e9, -20, 6e6, 0, 0});  // chunk 100000, threshold 600000
  std::vector<Sample> wave(1, Sample(1, 0));
  gate.setOutputReady(false);
  startWorker([&] { engine.submitWaveform(wave.data(), 1, false); });
  ASSERT_TRUE(waitFor([&] { return stage.chunks() >= 9; }));
  stopWorker();
  // Ready is raised after the submit that passes 600000 samples: the 7th chunk.
  std::vector<bool> expected{false, false, false, false, false, false, false, true, true};
  EXPECT_EQ(std::vector<bool>(stage.readyBefore.begin(), stage.readyBefore.begin() + 9), expected);
}

// Single shot: one pass per trigger, a trigger mark in front, the last sample never sent,
// and a flush at the end of the pass.
TEST_F(StreamEngineTest, SingleShotPassSendsAllButTheLastSample) {
  struct Case {
    int64_t length;
    std::vector<int> counts;
  };
  const int chunk = 100000;
  for (const Case& c : {Case{1, {0}}, Case{chunk, {chunk - 1}}, Case{chunk + 5, {chunk, 4}}}) {
    SCOPED_TRACE(c.length);
    device.retune(TuneRecord{1e9, -20, 6e6, 0, 0});
    log.mark();
    std::vector<Sample> wave(static_cast<size_t>(c.length), Sample(0.5f, 0.25f));
    engine.triggerRequests = 1;  // pressed before the loop started: the pass starts at once
    startWorker([&] { engine.submitWaveform(wave.data(), c.length, true); });
    ASSERT_TRUE(waitFor([&] { return !log.calls("krtFlushAndWait").empty(); }));
    std::this_thread::sleep_for(50ms);  // idle: nothing more without a trigger
    stopWorker();
    std::vector<std::string> expected{"krtSubmitTrigger"};
    for (size_t i = 0; i < c.counts.size(); ++i) expected.push_back("krtSubmitIQ");
    expected.push_back("krtFlushAndWait");
    EXPECT_EQ(log.sequence({"krtGetUSBStatus", "device"}), expected);
    std::vector<int> counts;
    for (auto& e : log.calls("krtSubmitIQ")) counts.push_back(e["args"]["count"].get<int>());
    EXPECT_EQ(counts, c.counts);
  }
}

TEST_F(StreamEngineTest, SingleShotWaitsForTriggerAndCollapsesRepeatedPresses) {
  device.retune(TuneRecord{1e9, -20, 6000, 0, 0});  // chunk 100
  std::vector<Sample> wave(1000, Sample(1, 0));     // a pass of 10 chunks
  startWorker([&] { engine.submitWaveform(wave.data(), 1000, true); });
  std::this_thread::sleep_for(60ms);
  EXPECT_TRUE(gate.isOutputReady()) << "at once, without a trigger";

  engine.requestTrigger();
  ASSERT_TRUE(waitFor([&] { return !log.calls("krtSubmitTrigger").empty(); }));
  // Three presses during the pass start exactly one more pass.
  engine.requestTrigger();
  engine.requestTrigger();
  engine.requestTrigger();
  ASSERT_TRUE(waitFor([&] { return log.calls("krtFlushAndWait").size() >= 2; }));
  std::this_thread::sleep_for(80ms);
  stopWorker();
  EXPECT_EQ(log.calls("krtSubmitTrigger").size(), 2u);
  EXPECT_EQ(log.calls("krtFlushAndWait").size(), 2u);
}

// Both tune 50e6 samples a second at the given frequency and level; the carrier plays full
// scale, the off state nothing, and leaves the output stage enabled.
TEST_F(StreamEngineTest, CarrierAndOffState) {
  stage.keepAtMost = 1;  // keep the first chunk only
  startWorker([&] { engine.generateCW(1.5e9, -7); });
  ASSERT_TRUE(waitFor([&] { return stage.chunks() >= 3; }));
  stopWorker();
  EXPECT_EQ(stage.chunkCounts[0], 833333);
  for (const Sample& s : stage.samples) ASSERT_EQ(s, Sample(1.0f, 0.0f));
  EXPECT_DOUBLE_EQ(log.calls("krtSetFrequency")[0]["args"]["frequency"].get<double>(), 1.5e9);
  EXPECT_DOUBLE_EQ(log.calls("krtSetLevel")[0]["args"]["level"].get<double>(), -7);

  log.mark();
  startWorker([&] { engine.runOffState(2e9, -30); });
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(gate.isOutputReady());
  stopWorker();
  EXPECT_EQ(log.sequence(),
            (std::vector<std::string>{"krtSetDigitalTuning", "krtSetSampleRate", "krtSetFrequency",
                                      "krtSetLevel", "krtSetRFOutputState"}));
  EXPECT_EQ(log.calls("krtSetRFOutputState")[0]["args"]["enabled"], 1);
  EXPECT_DOUBLE_EQ(log.calls("krtSetSampleRate")[0]["args"]["sampleRate"].get<double>(), 50e6);
}

TEST_F(StreamEngineTest, LostConnectionEndsTheLoopAndReportsOnce) {
  std::atomic<int> lost{0};
  engine.setConnectionLostHandler([&] { ++lost; });
  device.retune(TuneRecord{1e9, -20, 6e6, 0, 0});
  std::vector<Sample> wave(100, Sample(1, 0));
  std::atomic<bool> returned{false};
  startWorker([&] {
    engine.submitWaveform(wave.data(), 100, false);
    returned = true;
  });
  ASSERT_TRUE(waitFor([&] { return stage.chunks() >= 2; }));
  std::ofstream(unplugPath()) << "gone";
  ASSERT_TRUE(waitFor([&] { return returned.load(); }));
  EXPECT_EQ(lost.load(), 1);
  EXPECT_TRUE(engine.streaming) << "the flag stays set; the next restart joins the thread";
  stopWorker();
}

TEST_F(StreamEngineTest, EmptyWaveformStaysSilentUntilStopped) {
  device.retune(TuneRecord{1e9, -20, 6e6, 0, 0});
  for (bool singleShot : {false, true}) {
    engine.triggerRequests = 1;
    startWorker([&] { engine.submitWaveform(nullptr, 0, singleShot); });
    std::this_thread::sleep_for(40ms);
    stopWorker();
  }
  EXPECT_TRUE(log.calls("krtSubmitIQ").empty());
}

}  // namespace
