// SPDX-License-Identifier: MIT
// Tests of the simulated krt_api's streaming: pacing, queue, abort, underruns, USB failures.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "krt/krt_api.h"
#include "krt/krt_ext.h"
#include "krt_scenario.h"

using namespace krttest;

// 0.8 s of samples at three rates, each set between submits, queued at once: the rates take
// effect in stream order, and speed 2 plays them in half the time.
TEST(KrtStream, PlaysAtTheRateTimesSpeedWithRatesInStreamOrder) {
  const EventsLog log{scratch("events.jsonl")};
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_SPEED", "2"},
                              {"KRT40_SIM_QUEUE_MS", "5000"},
                              {"KRT40_SIM_EVENTS", scratch("events.jsonl")}}));
  const int h = openDefault();
  std::vector<float> iq(2 * 40000, 0.5f);
  EXPECT_EQ(krtSetSampleRate(h, 1e4), 0);
  const double t0 = monotonicSeconds();
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 2000), 0);  // 0.2 s
  EXPECT_EQ(krtSetSampleRate(h, 2e4), 0);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 4000), 0);  // 0.2 s
  EXPECT_EQ(krtSetSampleRate(h, 1e5), 0);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 40000), 0);  // 0.4 s
  EXPECT_EQ(krtFlushAndWait(h), 0);
  const double seconds = monotonicSeconds() - t0;
  EXPECT_GE(seconds, 0.395);
  EXPECT_LT(seconds, 0.7);
  EXPECT_EQ(krtCloseDevice(h), 0);
  EXPECT_EQ(deviceEvents(log, "underrun").size(), 0u);
  EXPECT_EQ(deviceEvents(log, "flushed").size(), 1u);
}

TEST(KrtStream, SubmitBlocksWhileTheQueueIsFull) {
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_QUEUE_MS", "100"}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e5), 0);  // the queue holds 10,000 samples
  std::vector<float> iq(2 * 30000, 0.5f);
  double t0 = monotonicSeconds();
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 5000), 0);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 4000), 0);
  EXPECT_LT(monotonicSeconds() - t0, 0.05);
  t0 = monotonicSeconds();
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 30000), 0);  // about 39,000 queued
  const double full = monotonicSeconds() - t0;
  EXPECT_GT(full, 0.2);  // waits until 10,000 are left: about 0.29 s
  EXPECT_LT(full, 0.6);
  EXPECT_EQ(krtAbort(h), 0);
  EXPECT_EQ(krtCloseDevice(h), 0);
}

// An abort drops the queued samples but puts the settings queued behind them in effect.
TEST(KrtStream, AbortDropsTheQueue) {
  const std::string prefix = scratch("abort");
  const EventsLog log{scratch("events.jsonl")};
  const int kSubmitted = 10000;
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_QUEUE_MS", "2000"},
                              {"KRT40_SIM_RECORD", prefix},
                              {"KRT40_SIM_EVENTS", scratch("events.jsonl")}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e4), 0);  // 10,000 samples: one second
  std::vector<float> iq(2 * kSubmitted);
  for (size_t i = 0; i < iq.size(); ++i) iq[i] = static_cast<float>(i);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), kSubmitted), 0);
  EXPECT_EQ(krtSetFrequency(h, 3e9), 0);
  sleepSeconds(0.1);
  const double t0 = monotonicSeconds();
  EXPECT_EQ(krtAbort(h), 0);
  EXPECT_EQ(krtFlushAndWait(h), 0);  // nothing left to play
  EXPECT_LT(monotonicSeconds() - t0, 0.2);
  // The meta file is rewritten at the abort, before any close.
  bool seen = false;
  for (int i = 0; i < 100 && !seen; ++i, sleepSeconds(0.01))
    seen = readFile(prefix + ".sigmf-meta").find("\"abort\"") != std::string::npos;
  EXPECT_TRUE(seen);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 10), 0);
  EXPECT_EQ(krtFlushAndWait(h), 0);
  EXPECT_EQ(krtCloseDevice(h), 0);

  const std::string data = readFile(prefix + ".sigmf-data");
  const long long played = static_cast<long long>(data.size() / 8) - 10;
  EXPECT_GT(played, 300);  // about 0.1 s at 1e4
  EXPECT_LT(played, 9000);
  EXPECT_EQ(std::memcmp(data.data(), iq.data(), 8 * played), 0) << "the head was played";
  const Json meta = readMeta(prefix);
  const auto aborts = annotations(meta, "abort");
  ASSERT_EQ(aborts.size(), 1u);
  EXPECT_EQ(aborts[0]["core:sample_start"], played);
  EXPECT_EQ(aborts[0]["krt40:dropped_samples"].get<long long>() + played, kSubmitted);
  EXPECT_EQ(captureAt(meta, played)["core:frequency"], 3e9);
  EXPECT_NE(captureAt(meta, played - 1)["core:frequency"], 3e9);
  const auto events = deviceEvents(log, "abort");
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0]["args"]["dropped"].get<long long>() + played, kSubmitted);
  EXPECT_EQ(deviceEvents(log, "underrun").size(), 0u);
}

TEST(KrtStream, UnderrunsAreCountedOnlyWhenTheQueueRunsDry) {
  const std::string prefix = scratch("underrun");
  const EventsLog log{scratch("events.jsonl")};
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_RECORD", prefix},
                              {"KRT40_SIM_EVENTS", scratch("events.jsonl")},
                              {"KRT40_SIM_RECORD_MAX", "5000"}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e5), 0);
  std::vector<float> iq(2 * 833333, 0.5f);
  sleepSeconds(0.05);  // idle before the first submit: no underrun
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 0), 0);
  sleepSeconds(0.03);                             // a count of 0 starts no flow
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 1000), 0);  // 10 ms
  sleepSeconds(0.06);                             // runs dry: one underrun
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 10000), 0);
  EXPECT_EQ(krtFlushAndWait(h), 0);  // a flush ends the flow: no underrun
  sleepSeconds(0.05);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 10000), 0);
  EXPECT_EQ(krtAbort(h), 0);
  sleepSeconds(0.03);  // nor does an abort

  // Steady streaming at 50e6 in chunks of 1/60 s with a producer that keeps up.
  EXPECT_EQ(krtSetSampleRate(h, 50e6), 0);
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(krtSubmitIQ(h, iq.data(), 833333), 0);
    EXPECT_EQ(krtGetUSBStatus(h), 0);
  }
  EXPECT_EQ(krtAbort(h), 0);
  int64_t counted = -1;
  EXPECT_EQ(krtGetUnderrunCount(h, &counted), 0);
  EXPECT_EQ(counted, 1);
  EXPECT_EQ(krtCloseDevice(h), 0);
  EXPECT_EQ(deviceEvents(log, "underrun").size(), 1u);
  const auto underruns = annotations(readMeta(prefix), "underrun");
  ASSERT_EQ(underruns.size(), 1u);
  EXPECT_EQ(underruns[0]["core:sample_start"], 1000);
  EXPECT_EQ(std::filesystem::file_size(prefix + ".sigmf-data"), 5000u * 8);  // the limit set
}

TEST(KrtStream, UnplugFileFailsTheUsbStatusForGood) {
  const std::string unplug = scratch("unplugged");
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_UNPLUG_FILE", unplug}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e5), 0);
  std::vector<float> iq(2 * 100000, 0.5f);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 5000), 0);
  EXPECT_EQ(krtGetUSBStatus(h), 0);
  std::ofstream(unplug) << "x";
  sleepSeconds(0.02);
  EXPECT_NE(krtGetUSBStatus(h), 0);
  const double t0 = monotonicSeconds();
  EXPECT_NE(krtSubmitIQ(h, iq.data(), 100000), 0);  // refused at once, not after a second
  EXPECT_NE(krtFlushAndWait(h), 0);
  EXPECT_LT(monotonicSeconds() - t0, 0.2);
  std::remove(unplug.c_str());
  EXPECT_NE(krtGetUSBStatus(h), 0);  // the session stays failed
  EXPECT_EQ(krtCloseDevice(h), 0);
  const int again = openDefault();  // a new session is healthy at once
  EXPECT_EQ(krtGetUSBStatus(again), 0);
  EXPECT_EQ(krtCloseDevice(again), 0);
}

TEST(KrtStream, FailAfterStopsPlayingAtThatMoment) {
  const std::string prefix = scratch("fail");
  ASSERT_TRUE(useEnvironment({{"KRT40_SIM_FAIL_AFTER_MS", "150"},
                              {"KRT40_SIM_RECORD", prefix},
                              {"KRT40_SIM_QUEUE_MS", "5000"}}));
  const int h = openDefault();
  EXPECT_EQ(krtSetSampleRate(h, 1e4), 0);
  std::vector<float> iq(2 * 10000, 0.5f);
  EXPECT_EQ(krtSubmitIQ(h, iq.data(), 10000), 0);
  EXPECT_EQ(krtGetUSBStatus(h), 0);
  sleepSeconds(0.3);
  EXPECT_NE(krtGetUSBStatus(h), 0);
  EXPECT_EQ(krtCloseDevice(h), 0);
  const long long played = static_cast<long long>(readFile(prefix + ".sigmf-data").size() / 8);
  EXPECT_GT(played, 100);
  EXPECT_LE(played, 1500);  // at most 150 ms at 1e4, counted from the open
}
