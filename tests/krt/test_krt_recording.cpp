// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api's SigMF recording and events log.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krt/krt_api.h"
#include "krt_child.h"

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

}  // namespace

// The recording holds the submitted samples bit for bit, in odd pieces, with a capture
// segment at each change of settings and the triggers at their sample positions.
TEST(KrtRecording, SegmentsAndTriggersSitAtTheirSamplePositions) {
  const std::vector<float> iq = testSamples(3801, 7);
  for (const char* speed : {"0", "1"}) {
    SCOPED_TRACE(std::string("speed ") + speed);
    TempDir dir;
    const std::string prefix = dir.path("segments");
    const std::string events = dir.path("events.jsonl");
    const ChildResult c = runInChild({{"KRT40_SIM_SPEED", speed},
                                      {"KRT40_SIM_RECORD", prefix},
                                      {"KRT40_SIM_EVENTS", events},
                                      {"KRT40_SIM_QUEUE_MS", "2000"}},
                                     [&](ChildReport& r) {
                                       const int h = openDefault(r);
                                       size_t at = 0;
                                       auto submit = [&](int n) {
                                         CHILD_CHECK(r, krtSubmitIQ(h, iq.data() + 2 * at, n) == 0);
                                         at += static_cast<size_t>(n);
                                       };
                                       // At speed 1 all of this is queued before it plays: the
                                       // marks travel in the queue.
                                       CHILD_CHECK(r, krtSetSampleRate(h, 1e4) == 0);
                                       CHILD_CHECK(r, krtSetFrequency(h, 1e9) == 0);
                                       CHILD_CHECK(r, krtSetLevel(h, -20) == 0);
                                       submit(1001);  // 0..1000
                                       CHILD_CHECK(r, krtSetFrequency(h, 2e9) == 0);
                                       submit(0);
                                       submit(499);  // 1001..1499
                                       CHILD_CHECK(r, krtSubmitTrigger(h) == 0);
                                       submit(301);  // 1500..1800
                                       CHILD_CHECK(r, krtSetLevel(h, -10) == 0);
                                       CHILD_CHECK(r, krtSetSampleRate(h, 2e4) == 0);
                                       submit(1999);  // 1801..3799
                                       CHILD_CHECK(r, krtSubmitTrigger(h) == 0);
                                       CHILD_CHECK(r, krtFlushAndWait(h) == 0);
                                       CHILD_CHECK(r, krtSetIQOffset(h, 3, -4) == 0);
                                       submit(1);  // 3800
                                       CHILD_CHECK(r, krtFlushAndWait(h) == 0);
                                       CHILD_CHECK(r, krtCloseDevice(h) == 0);
                                     });
    ASSERT_EQ(c.exitCode, 0) << c.describe();
    const std::string data = readFile(prefix + ".sigmf-data");
    ASSERT_EQ(data.size(), iq.size() * sizeof(float));
    EXPECT_EQ(std::memcmp(data.data(), iq.data(), data.size()), 0);
    const Json meta = readJson(prefix + ".sigmf-meta");
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
      for (const char* key : {"krt40:digital_tuning", "krt40:rf_output", "krt40:iq_offset",
                              "krt40:timebase", "krt40:timebase_offset_ppm"}) {
        EXPECT_TRUE(captures[i].contains(key)) << key;
      }
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
    const std::vector<Json> lines = readJsonLines(events);
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
    const std::string raw = readFile(events);
    EXPECT_EQ(raw.rfind("{\"t\":", 0), 0u) << raw.substr(0, 80);
  }
}

// Speed 0 plays unpaced (21,000 s of samples at 1e3 go at once); the recording stops at its
// default limit of 20e6 samples, inside a submit, while playback goes on.
TEST(KrtRecording, StopsAtTheLimitWhilePlaybackGoesOn) {
  TempDir dir;
  const std::string prefix = dir.path("limit");
  const int chunk = 999999;
  const std::vector<float> iq = testSamples(chunk, 3);
  const ChildResult c =
      runInChild({{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}}, [&](ChildReport& r) {
        const int h = openDefault(r);
        CHILD_CHECK(r, krtSetSampleRate(h, 1e3) == 0);
        const double t0 = monotonicSeconds();
        for (int i = 0; i < 21; ++i) CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), chunk) == 0);
        CHILD_CHECK(r, krtSubmitTrigger(h) == 0);  // past the limit: not recorded
        CHILD_CHECK(r, krtFlushAndWait(h) == 0);
        r.value("seconds", monotonicSeconds() - t0);
        CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
        CHILD_CHECK(r, krtCloseDevice(h) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_LT(c.at("seconds"), 20);
  const std::string data = prefix + ".sigmf-data";
  ASSERT_EQ(std::filesystem::file_size(data), 20000000u * 8);
  std::ifstream in(data, std::ios::binary);
  in.seekg(20 * chunk * 8);
  std::vector<float> tail(2 * 20);  // the head of the last submit
  in.read(reinterpret_cast<char*>(tail.data()), 20 * 8);
  EXPECT_EQ(std::memcmp(tail.data(), iq.data(), 20 * 8), 0);
  EXPECT_TRUE(readJson(prefix + ".sigmf-meta").at("annotations").empty());
}

TEST(KrtRecording, SessionsOfOneProcessShareOneRecording) {
  TempDir dir;
  const std::string prefix = dir.path("sessions");
  const std::vector<float> iq = testSamples(150, 11);
  const ChildResult c = runInChild(
      {{"KRT40_SIM_SPEED", "0"}, {"KRT40_SIM_RECORD", prefix}, {"KRT40_SIM_DEVICES", "1,2"}},
      [&](ChildReport& r) {
        int a = -1, b = -1;
        CHILD_CHECK(r, krtOpenDeviceBySerial(&a, 1) == 0);
        CHILD_CHECK(r, krtOpenDeviceBySerial(&b, 2) == 0);  // not recorded: a holds it
        CHILD_CHECK(r, krtSubmitIQ(a, iq.data(), 100) == 0);
        CHILD_CHECK(r, krtSubmitIQ(b, iq.data(), 100) == 0);
        CHILD_CHECK(r, krtCloseDevice(a) == 0);
        CHILD_CHECK(r, krtCloseDevice(b) == 0);
        CHILD_CHECK(r, krtOpenDeviceBySerial(&a, 1) == 0);
        CHILD_CHECK(r, krtSetFrequency(a, 3e9) == 0);
        CHILD_CHECK(r, krtSubmitIQ(a, iq.data() + 200, 50) == 0);
        CHILD_CHECK(r, krtCloseDevice(a) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  const std::string data = readFile(prefix + ".sigmf-data");
  ASSERT_EQ(data.size(), 150u * 8);
  EXPECT_EQ(std::memcmp(data.data(), iq.data(), data.size()), 0);
  const Json meta = readJson(prefix + ".sigmf-meta");
  ASSERT_EQ(meta.at("captures").size(), 2u);
  EXPECT_EQ(meta["captures"][1]["core:sample_start"], 100);
  EXPECT_EQ(meta["captures"][1]["core:frequency"], 3e9);
}
