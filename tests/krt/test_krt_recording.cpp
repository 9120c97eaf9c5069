// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api's SigMF recording and events log.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krt/krt_api.h"
#include "krt_scenario.h"

using namespace krttest;

namespace {

// Samples with awkward bit patterns: NaNs with payloads, -0, denormals, infinities.
std::vector<float> testSamples(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<float> iq(2 * count);
  for (size_t i = 0; i < iq.size(); ++i) {
    uint32_t bits = rng();
    if (i % 97 == 5) bits = 0x7fc00123u;  // NaN with a payload
    if (i % 89 == 7) bits = 0x80000000u;  // -0
    if (i % 83 == 3) bits = 0x00000001u;  // smallest denormal
    std::memcpy(&iq[i], &bits, 4);
  }
  return iq;
}

// At speed 1 all of the scenario is queued before it plays: the marks travel in the queue.
class KrtRecordingAtSpeed : public ::testing::TestWithParam<int> {};

// The recording holds the submitted samples bit for bit, in odd pieces, with a capture
// segment at each change of settings and the triggers at their sample positions.
TEST_P(KrtRecordingAtSpeed, SegmentsAndTriggersSitAtTheirSamplePositions) {
  const std::vector<float> iq = testSamples(3801, 7);
  const std::string prefix = scratch("segments"), events = scratch("events.jsonl");
  const EventsLog log{events};
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_SPEED", std::to_string(GetParam())},
                              {"KRT40_SIM_RECORD", prefix},
                              {"KRT40_SIM_EVENTS", events},
                              {"KRT40_SIM_QUEUE_MS", "2000"}}));
  const int h = openDefault();
  size_t at = 0;
  auto submit = [&](int n) {
    EXPECT_EQ(krtSubmitIQ(h, iq.data() + 2 * at, n), 0);
    at += static_cast<size_t>(n);
  };
  EXPECT_EQ(krtSetSampleRate(h, 1e4), 0);
  EXPECT_EQ(krtSetFrequency(h, 1e9), 0);
  EXPECT_EQ(krtSetLevel(h, -20), 0);
  submit(1001);  // 0..1000
  EXPECT_EQ(krtSetFrequency(h, 2e9), 0);
  submit(0);
  submit(499);  // 1001..1499
  EXPECT_EQ(krtSubmitTrigger(h), 0);
  submit(301);  // 1500..1800
  EXPECT_EQ(krtSetLevel(h, -10), 0);
  EXPECT_EQ(krtSetSampleRate(h, 2e4), 0);
  submit(1999);  // 1801..3799
  EXPECT_EQ(krtSubmitTrigger(h), 0);
  EXPECT_EQ(krtFlushAndWait(h), 0);
  EXPECT_EQ(krtSetIQOffset(h, 3, -4), 0);
  submit(1);  // 3800
  EXPECT_EQ(krtFlushAndWait(h), 0);
  EXPECT_EQ(krtCloseDevice(h), 0);

  const std::string data = readFile(prefix + ".sigmf-data");
  ASSERT_EQ(data.size(), iq.size() * sizeof(float));
  EXPECT_EQ(std::memcmp(data.data(), iq.data(), data.size()), 0);
  const Json meta = readMeta(prefix);
  const Json& global = meta.at("global");
  EXPECT_EQ(global.at("core:datatype"), "cf32_le");
  EXPECT_EQ(global.at("core:version").get<std::string>().substr(0, 2), "1.");
  EXPECT_EQ(global.at("core:sample_rate"), 1e4);
  EXPECT_EQ(global.at("core:hw"), "KRT40 (simulated)");
  EXPECT_TRUE(global.contains("core:recorder"));
  const Json& captures = meta.at("captures");
  ASSERT_EQ(captures.size(), 4u) << captures.dump(1);
  const long long starts[] = {0, 1001, 1801, 3800};
  const double frequencies[] = {1e9, 2e9, 2e9, 2e9};
  const double levels[] = {-20, -20, -10, -10};
  const double rates[] = {1e4, 1e4, 2e4, 2e4};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(captures[i]["core:sample_start"], starts[i]);
    EXPECT_EQ(captures[i]["core:frequency"], frequencies[i]);
    EXPECT_EQ(captures[i]["krt40:level_dbm"], levels[i]);
    EXPECT_EQ(captures[i]["krt40:sample_rate"], rates[i]);
  }
  EXPECT_EQ(captures[3]["krt40:iq_offset"], Json::array({3, -4}));
  const auto triggers = annotations(meta, "trigger");
  ASSERT_EQ(triggers.size(), 2u);
  EXPECT_EQ(triggers[0]["core:sample_start"], 1500);
  EXPECT_EQ(triggers[1]["core:sample_start"], 3800);
  // The lone last sample at speed 1 may run the queue dry; nothing else is annotated.
  for (const Json& a : meta["annotations"]) {
    EXPECT_TRUE(a["core:label"] == "trigger" || a["core:label"] == "underrun") << a.dump();
    EXPECT_TRUE(a.contains("core:sample_count"));
  }

  // The events log, in call order (the panel and engine tests check the sequences of
  // calls), with the header's argument names.
  const std::vector<Json> lines = log.events();
  for (size_t i = 1; i < lines.size(); ++i) EXPECT_GE(lines[i]["t"], lines[i - 1]["t"]);
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(lines[0]["args"], Json({{"serialNumber", kSerial}}));
  EXPECT_FALSE(lines[0].contains("handle"));
  EXPECT_EQ(lines[0]["out"]["handle"], 0);
  EXPECT_EQ(lines[0]["ret"], 0);
  EXPECT_EQ(lines[1]["handle"], 0);
  EXPECT_EQ(lines[1]["args"], Json({{"sampleRate", 1e4}}));
  EXPECT_EQ(lines[4]["args"], Json({{"count", 1001}}));
  // nlohmann::json sorts keys when parsing; the order on disk shows in the raw text.
  EXPECT_EQ(readFile(events).rfind("{\"t\":", 0), 0u);
}

INSTANTIATE_TEST_SUITE_P(Speed, KrtRecordingAtSpeed, ::testing::Values(0, 1));

}  // namespace

// Speed 0 plays unpaced (21,000 s of samples at 1e3 go at once); the recording stops at its
// default limit of 20e6 samples, inside a submit, while playback goes on.
TEST(KrtRecording, StopsAtTheLimitWhilePlaybackGoesOn) {
  const std::string prefix = scratch("limit");
  const int chunk = 999999;
  const std::vector<float> iq = testSamples(chunk, 3);
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e3), 0);
  const double t0 = monotonicSeconds();
  for (int i = 0; i < 21; ++i) EXPECT_EQ(krtSubmitIQ(h, iq.data(), chunk), 0);
  EXPECT_EQ(krtSubmitTrigger(h), 0);  // past the limit: not recorded
  EXPECT_EQ(krtFlushAndWait(h), 0);
  EXPECT_LT(monotonicSeconds() - t0, 20);
  EXPECT_EQ(krtGetUSBStatus(h), 0);
  EXPECT_EQ(krtCloseDevice(h), 0);
  const std::string data = prefix + ".sigmf-data";
  ASSERT_EQ(std::filesystem::file_size(data), 20000000u * 8);
  std::ifstream in(data, std::ios::binary);
  in.seekg(20 * chunk * 8);
  std::vector<float> tail(2 * 20);  // the head of the last submit
  in.read(reinterpret_cast<char*>(tail.data()), 20 * 8);
  EXPECT_EQ(std::memcmp(tail.data(), iq.data(), 20 * 8), 0);
  EXPECT_TRUE(readMeta(prefix).at("annotations").empty());
}

TEST(KrtRecording, SessionsOfOneProcessShareOneRecording) {
  const std::string prefix = scratch("sessions");
  const std::vector<float> iq = testSamples(150, 11);
  ASSERT_TRUE(useEnvironment(
      {{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}, {"KRT40_SIM_DEVICES", "1,2"}}));
  int a = -1, b = -1;
  EXPECT_EQ(krtOpenDeviceBySerial(&a, 1), 0);
  EXPECT_EQ(krtOpenDeviceBySerial(&b, 2), 0);  // not recorded: a holds it
  EXPECT_EQ(krtSubmitIQ(a, iq.data(), 100), 0);
  EXPECT_EQ(krtSubmitIQ(b, iq.data(), 100), 0);
  EXPECT_EQ(krtCloseDevice(a), 0);
  EXPECT_EQ(krtCloseDevice(b), 0);
  EXPECT_EQ(krtOpenDeviceBySerial(&a, 1), 0);
  EXPECT_EQ(krtSetFrequency(a, 3e9), 0);
  EXPECT_EQ(krtSubmitIQ(a, iq.data() + 200, 50), 0);
  EXPECT_EQ(krtCloseDevice(a), 0);
  const std::string data = readFile(prefix + ".sigmf-data");
  ASSERT_EQ(data.size(), 150u * 8);
  EXPECT_EQ(std::memcmp(data.data(), iq.data(), data.size()), 0);
  const Json meta = readMeta(prefix);
  ASSERT_EQ(meta.at("captures").size(), 2u);
  EXPECT_EQ(meta["captures"][1]["core:sample_start"], 100);
  EXPECT_EQ(meta["captures"][1]["core:frequency"], 3e9);
}
