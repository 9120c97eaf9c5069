// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api's streaming: pacing, queue, abort, underruns, USB failures.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krt/krt_api.h"
#include "krt_child.h"

using namespace krttest;

// 0.8 s of samples at three rates, each set between submits, queued at once: the rates take
// effect in stream order, and speed 2 plays them in half the time.
TEST(KrtStream, PlaysAtTheRateTimesSpeedWithRatesInStreamOrder) {
  TempDir dir;
  const std::string events = dir.path("events.jsonl");
  const ChildResult c = runInChild(
      {{"KRT40_SIM_SPEED", "2"}, {"KRT40_SIM_QUEUE_MS", "5000"}, {"KRT40_SIM_EVENTS", events}},
      [](ChildReport& r) {
        const int h = openDefault(r);
        std::vector<float> iq(2 * 40000, 0.5f);
        CHILD_CHECK(r, krtSetSampleRate(h, 1e4) == 0);
        const double t0 = monotonicSeconds();
        CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 2000) == 0);  // 0.2 s
        CHILD_CHECK(r, krtSetSampleRate(h, 2e4) == 0);
        CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 4000) == 0);  // 0.2 s
        CHILD_CHECK(r, krtSetSampleRate(h, 1e5) == 0);
        CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 40000) == 0);  // 0.4 s
        CHILD_CHECK(r, krtFlushAndWait(h) == 0);
        r.value("seconds", monotonicSeconds() - t0);
        CHILD_CHECK(r, krtCloseDevice(h) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_GE(c.at("seconds"), 0.395);
  EXPECT_LT(c.at("seconds"), 0.7);
  const std::vector<Json> lines = readJsonLines(events);
  EXPECT_EQ(deviceEvents(lines, "underrun"), 0);
  EXPECT_EQ(deviceEvents(lines, "flushed"), 1);
}

TEST(KrtStream, SubmitBlocksWhileTheQueueIsFull) {
  const ChildResult c = runInChild({{"KRT40_SIM_QUEUE_MS", "100"}}, [](ChildReport& r) {
    const int h = openDefault(r);
    CHILD_CHECK(r, krtSetSampleRate(h, 1e5) == 0);  // the queue holds 10,000 samples
    std::vector<float> iq(2 * 30000, 0.5f);
    const double start = monotonicSeconds();
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 5000) == 0);
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 4000) == 0);
    r.value("roomy", monotonicSeconds() - start);
    const double t0 = monotonicSeconds();
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 30000) == 0);  // about 39,000 queued
    r.value("full", monotonicSeconds() - t0);
    CHILD_CHECK(r, krtFlushAndWait(h) == 0);
    r.value("total", monotonicSeconds() - start);
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 0) == 0);  // legal, starts nothing
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
  });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_LT(c.at("roomy"), 0.05);
  EXPECT_GT(c.at("full"), 0.2);  // waits until 10,000 are left: about 0.29 s
  EXPECT_LT(c.at("full"), 0.6);
  EXPECT_GT(c.at("total"), 0.385);  // 39,000 samples at 1e5
  EXPECT_LT(c.at("total"), 0.8);
}

// An abort drops the queued samples but puts the settings queued behind them in effect.
TEST(KrtStream, AbortDropsTheQueue) {
  TempDir dir;
  const std::string prefix = dir.path("abort");
  const std::string events = dir.path("events.jsonl");
  const int kSubmitted = 10000;
  const ChildResult c = runInChild(
      {{"KRT40_SIM_QUEUE_MS", "2000"}, {"KRT40_SIM_RECORD", prefix}, {"KRT40_SIM_EVENTS", events}},
      [&](ChildReport& r) {
        const int h = openDefault(r);
        CHILD_CHECK(r, krtSetSampleRate(h, 1e4) == 0);  // 10,000 samples: one second
        std::vector<float> iq(2 * kSubmitted);
        for (size_t i = 0; i < iq.size(); ++i) iq[i] = static_cast<float>(i);
        CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), kSubmitted) == 0);
        CHILD_CHECK(r, krtSetFrequency(h, 3e9) == 0);
        sleepSeconds(0.1);
        double t0 = monotonicSeconds();
        CHILD_CHECK(r, krtAbort(h) == 0);
        CHILD_CHECK(r, krtFlushAndWait(h) == 0);  // nothing left to play
        r.value("seconds", monotonicSeconds() - t0);
        // The meta file is rewritten at the abort, before any close.
        bool seen = false;
        for (int i = 0; i < 100 && !seen; ++i) {
          sleepSeconds(0.01);
          const std::string meta = readFile(prefix + ".sigmf-meta");
          seen = meta.find("\"abort\"") != std::string::npos;
        }
        CHILD_CHECK(r, seen);
        CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 10) == 0);
        CHILD_CHECK(r, krtFlushAndWait(h) == 0);
        CHILD_CHECK(r, krtCloseDevice(h) == 0);
      });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_LT(c.at("seconds"), 0.2);  // the queue held most of a second
  const std::string data = readFile(prefix + ".sigmf-data");
  const long long played = static_cast<long long>(data.size() / 8) - 10;
  EXPECT_GT(played, 300);  // about 0.1 s at 1e4
  EXPECT_LT(played, 9000);
  // The played part is the head of what was submitted.
  for (long long i = 0; i < 2 * played; ++i) {
    float v;
    std::memcpy(&v, data.data() + 4 * i, 4);
    ASSERT_EQ(v, static_cast<float>(i));
  }
  const Json meta = readJson(prefix + ".sigmf-meta");
  const auto aborts = annotations(meta, "abort");
  ASSERT_EQ(aborts.size(), 1u);
  EXPECT_EQ(aborts[0]["core:sample_start"], played);
  EXPECT_EQ(aborts[0]["krt40:dropped_samples"].get<long long>() + played, kSubmitted);
  EXPECT_EQ(captureAt(meta, played)["core:frequency"], 3e9);
  EXPECT_NE(captureAt(meta, played - 1)["core:frequency"], 3e9);
  const std::vector<Json> lines = readJsonLines(events);
  ASSERT_EQ(deviceEvents(lines, "abort"), 1);
  for (const Json& e : lines) {
    if (e["fn"] == "device" && e["args"]["event"] == "abort") {
      EXPECT_EQ(e["args"]["dropped"].get<long long>() + played, kSubmitted);
    }
  }
  EXPECT_EQ(deviceEvents(lines, "underrun"), 0);
}

TEST(KrtStream, UnderrunsAreCountedOnlyWhenTheQueueRunsDry) {
  TempDir dir;
  const std::string prefix = dir.path("underrun");
  const std::string events = dir.path("events.jsonl");
  const ChildResult c =
      runInChild({{"KRT40_SIM_RECORD", prefix},
                  {"KRT40_SIM_EVENTS", events},
                  {"KRT40_SIM_RECORD_MAX", "5000"}},
                 [](ChildReport& r) {
                   const int h = openDefault(r);
                   CHILD_CHECK(r, krtSetSampleRate(h, 1e5) == 0);
                   std::vector<float> iq(2 * 833333, 0.5f);
                   sleepSeconds(0.05);  // idle before the first submit: no underrun
                   CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 0) == 0);
                   sleepSeconds(0.03);  // a count of 0 starts no flow
                   CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 1000) == 0);  // 10 ms
                   sleepSeconds(0.06);                                    // runs dry: one underrun
                   CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 10000) == 0);
                   CHILD_CHECK(r, krtFlushAndWait(h) == 0);  // a flush ends the flow: no underrun
                   sleepSeconds(0.05);
                   CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 10000) == 0);
                   CHILD_CHECK(r, krtAbort(h) == 0);
                   sleepSeconds(0.03);  // nor does an abort

                   // Steady streaming at 50e6 in chunks of 1/60 s with a producer that keeps up.
                   CHILD_CHECK(r, krtSetSampleRate(h, 50e6) == 0);
                   for (int i = 0; i < 30; ++i) {
                     CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 833333) == 0);
                     CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
                   }
                   CHILD_CHECK(r, krtAbort(h) == 0);
                   CHILD_CHECK(r, krtCloseDevice(h) == 0);
                 });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  const std::vector<Json> lines = readJsonLines(events);
  EXPECT_EQ(deviceEvents(lines, "underrun"), 1);
  const Json meta = readJson(prefix + ".sigmf-meta");
  const auto underruns = annotations(meta, "underrun");
  ASSERT_EQ(underruns.size(), 1u);
  EXPECT_EQ(underruns[0]["core:sample_start"], 1000);
  EXPECT_EQ(std::filesystem::file_size(prefix + ".sigmf-data"), 5000u * 8);  // the limit set
}

TEST(KrtStream, UnplugFileFailsTheUsbStatusForGood) {
  TempDir dir;
  const std::string unplug = dir.path("unplugged");
  const ChildResult c = runInChild({{"KRT40_SIM_UNPLUG_FILE", unplug}}, [&](ChildReport& r) {
    const int h = openDefault(r);
    CHILD_CHECK(r, krtSetSampleRate(h, 1e5) == 0);
    std::vector<float> iq(2 * 100000, 0.5f);
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 5000) == 0);
    CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
    std::ofstream(unplug) << "x";
    sleepSeconds(0.02);
    CHILD_CHECK(r, krtGetUSBStatus(h) != 0);
    const double t0 = monotonicSeconds();
    CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 100000) != 0);  // refused at once
    CHILD_CHECK(r, krtFlushAndWait(h) != 0);
    r.value("seconds", monotonicSeconds() - t0);
    std::remove(unplug.c_str());
    CHILD_CHECK(r, krtGetUSBStatus(h) != 0);  // the session stays failed
    CHILD_CHECK(r, krtAbort(h) == 0);
    CHILD_CHECK(r, krtCloseDevice(h) == 0);
    const int again = openDefault(r);  // a new session is healthy at once
    CHILD_CHECK(r, krtGetUSBStatus(again) == 0);
    CHILD_CHECK(r, krtSubmitIQ(again, iq.data(), 100) == 0);
    CHILD_CHECK(r, krtCloseDevice(again) == 0);
  });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  EXPECT_LT(c.at("seconds"), 0.2);  // accepted, the submit would take about a second
}

TEST(KrtStream, FailAfterStopsPlayingAtThatMoment) {
  TempDir dir;
  const std::string prefix = dir.path("fail");
  const ChildResult c = runInChild({{"KRT40_SIM_FAIL_AFTER_MS", "150"},
                                    {"KRT40_SIM_RECORD", prefix},
                                    {"KRT40_SIM_QUEUE_MS", "5000"}},
                                   [](ChildReport& r) {
                                     const int h = openDefault(r);
                                     CHILD_CHECK(r, krtSetSampleRate(h, 1e4) == 0);
                                     std::vector<float> iq(2 * 10000, 0.5f);
                                     CHILD_CHECK(r, krtSubmitIQ(h, iq.data(), 10000) == 0);
                                     CHILD_CHECK(r, krtGetUSBStatus(h) == 0);
                                     sleepSeconds(0.3);
                                     CHILD_CHECK(r, krtGetUSBStatus(h) != 0);
                                     CHILD_CHECK(r, krtAbort(h) == 0);
                                     CHILD_CHECK(r, krtCloseDevice(h) == 0);
                                   });
  ASSERT_EQ(c.exitCode, 0) << c.describe();
  const long long played = static_cast<long long>(readFile(prefix + ".sigmf-data").size() / 8);
  EXPECT_GT(played, 100);
  EXPECT_LE(played, 1500);  // at most 150 ms at 1e4, counted from the open
}
