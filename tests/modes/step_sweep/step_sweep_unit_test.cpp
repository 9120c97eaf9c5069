// SPDX-License-Identifier: MIT
// Pulse, step sweep and ramp sweep inside the instrument: what reaches the simulated device,
// and the remote rows that set and read the three views.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "core/panel_fixture.h"
#include "core/scpi_client.h"
#include "modes/pulse/mode_view_pulse.h"
#include "modes/ramp_sweep/mode_view_ramp_sweep.h"
#include "modes/step_sweep/mode_view_step_sweep.h"
#include "shell/error_queue.h"
#include "support/events_log.h"

#include <QCheckBox>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

// The calls that make up a sweep or a pass, in order.
const std::vector<std::string> playCalls = {"krtSetFrequency", "krtSetLevel", "krtSubmitIQ",
                                            "krtSubmitTrigger", "krtFlushAndWait"};

class PulseSweepsTest : public PanelFixture {
protected:
  void SetUp() override {
    PanelFixture::SetUp();
    pulse = view<ModeViewPulse>(3);
    step = view<ModeViewStepSweep>(5);
    ramp = view<ModeViewRampSweep>(6);
    ASSERT_TRUE(pulse && step && ramp);
  }

  template <class View>
  View* view(int index) {
    for (ModeWidget* v : central.views())
      if (v->modeIndex() == index) return qobject_cast<View*>(v);
    return nullptr;
  }

  // Opens the device with RF and modulation on: a carrier plays.
  void connectAndEnable() {
    ASSERT_TRUE(device.open(21000001));
    central.startStreamingQuiet();
    central.setRFEnabled(true);
    central.setModEnabled(true);
  }

  // Selects a mode and waits until its generator has set the sample rate.
  void start(ModeWidget* mode, double sampleRate) {
    log.mark();
    mode->enabledCheck()->click();
    ASSERT_TRUE(waitUntil([&] {
      for (const json& e : sinceRestart())
        if (e.value("fn", "") == "krtSetSampleRate" && e["args"]["sampleRate"] == sampleRate)
          return true;
      return false;
    }));
  }

  // Events since the mark that follow the abort which ended the thread before: the restart's
  // own calls and those of the new thread.
  std::vector<json> sinceRestart() const {
    std::vector<json> events = log.events();
    auto abort = std::find_if(events.begin(), events.end(),
                              [](const json& e) { return e.value("fn", "") == "krtAbort"; });
    return abort == events.end() ? std::vector<json>() : std::vector<json>(abort + 1, events.end());
  }

  // The calls of playCalls since the restart, with the value each was given.
  std::vector<std::pair<std::string, double>> played() const {
    std::vector<std::pair<std::string, double>> out;
    for (const json& e : sinceRestart()) {
      const std::string fn = e.value("fn", "");
      if (std::find(playCalls.begin(), playCalls.end(), fn) == playCalls.end()) continue;
      double value = 0;
      if (fn == "krtSetFrequency") value = e["args"]["frequency"];
      if (fn == "krtSetLevel") value = e["args"]["level"];
      if (fn == "krtSubmitIQ") value = e["args"]["count"];
      out.emplace_back(fn, value);
    }
    return out;
  }

  size_t count(const std::string& fn) const {
    const std::vector<json> events = sinceRestart();
    return size_t(std::count_if(events.begin(), events.end(),
                                [&](const json& e) { return e.value("fn", "") == fn; }));
  }

  ModeViewPulse* pulse = nullptr;
  ModeViewStepSweep* step = nullptr;
  ModeViewRampSweep* ramp = nullptr;
};

TEST_F(PulseSweepsTest, SingleStepSweepRunsOncePerTriggerPointByPoint) {
  step->setTriggerType(TriggerSingle);
  step->setSweepType(StepSweepFreqAmplitude);
  step->setStartFreq(1e9);
  step->setStopFreq(2e9);
  step->setPoints(3);
  step->setStartAmpl(-10);
  step->setStopAmpl(-30);
  step->setDwellTime(0.001);
  connectAndEnable();
  start(step, 5e7);
  QTest::qWait(50);
  EXPECT_TRUE(played().empty()) << "nothing plays before the trigger";

  const std::vector<std::pair<std::string, double>> sweep = {
      {"krtSetFrequency", 1e9},   {"krtSetLevel", -10}, {"krtSubmitIQ", 50000},
      {"krtSetFrequency", 1.5e9}, {"krtSetLevel", -20}, {"krtSubmitIQ", 50000},
      {"krtSetFrequency", 2e9},   {"krtSetLevel", -30}, {"krtSubmitIQ", 50000},
      {"krtFlushAndWait", 0}};
  central.triggerPressed();
  ASSERT_TRUE(waitUntil([&] { return count("krtFlushAndWait") == 1; }));
  QTest::qWait(30);
  EXPECT_EQ(played(), sweep);

  central.triggerPressed();
  ASSERT_TRUE(waitUntil([&] { return count("krtFlushAndWait") == 2; }));
  std::vector<std::pair<std::string, double>> twice = sweep;
  twice.insert(twice.end(), sweep.begin(), sweep.end());
  EXPECT_EQ(played(), twice);
}

TEST_F(PulseSweepsTest, ContinuousFreqSweepAlternatesAtThePanelLevel) {
  step->setStartFreq(2e9);
  step->setStopFreq(1e9);
  step->setPoints(2);
  step->setStartAmpl(5);  // ignored by a "Freq" sweep
  step->setDwellTime(0.001);
  central.setLevel(-7.5);
  connectAndEnable();
  start(step, 5e7);
  ASSERT_TRUE(waitUntil([&] { return count("krtSetFrequency") >= 6; }));
  central.stopStreaming();

  const std::vector<std::pair<std::string, double>> calls = played();
  int point = 0;
  for (size_t i = 0; i + 2 < calls.size() && point < 6; i += 3, ++point) {
    SCOPED_TRACE(point);
    EXPECT_EQ(calls[i], std::make_pair(std::string("krtSetFrequency"), point % 2 ? 1e9 : 2e9));
    EXPECT_EQ(calls[i + 1], std::make_pair(std::string("krtSetLevel"), -7.5));
    EXPECT_EQ(calls[i + 2], std::make_pair(std::string("krtSubmitIQ"), 50000.0));
  }
  EXPECT_EQ(point, 6);
  EXPECT_EQ(count("krtFlushAndWait"), 0u) << "no flush at the turn";
}

TEST_F(PulseSweepsTest, LongDwellIsFedInPiecesAndStopsBetweenThem) {
  step->setDwellTime(10.0);
  connectAndEnable();
  start(step, 5e7);
  ASSERT_TRUE(waitUntil([&] { return count("krtSubmitIQ") >= 3; }));
  central.stopStreaming();  // returns within a piece; a hang ends the test by its timeout
  for (const json& e : sinceRestart()) {
    if (e.value("fn", "") == "krtSubmitIQ") {
      EXPECT_EQ(e["args"]["count"], 500000);
    }
  }
  EXPECT_EQ(count("krtSetFrequency"), 1u);
  EXPECT_EQ(log.sequence().back(), "krtAbort");
}

TEST_F(PulseSweepsTest, StepSweepReportsALostDevice) {
  std::atomic<int> lost{0};
  QObject::connect(
      &central, &CentralWidget::deviceConnectionLost, &central, [&] { ++lost; },
      Qt::DirectConnection);
  connectAndEnable();
  start(step, 5e7);
  ASSERT_TRUE(waitUntil([&] { return count("krtSubmitIQ") > 0; }));
  std::ofstream(unplugPath()) << "unplugged";
  EXPECT_TRUE(waitUntil([&] { return lost.load() == 1; }));
  // The thread ends through the dispatch's abort, as after any stop.
  EXPECT_TRUE(waitUntil([&] { return log.sequence().back() == "krtAbort"; }));
}

// ---- Remote rows ----------------------------------------------------------------------------

TEST_F(PulseSweepsTest, RemoteRowsSetAndReadTheViews) {
  ScpiClient client(central.scpiServerPort());
  ASSERT_TRUE(client.connected);
  const std::vector<std::pair<QString, QString>> rows = {
      // Mode state: ON selects the mode, OFF does nothing at all.
      {":PULM?;:STEP?;:RAMP?", "0;0;0"},
      {":PULM ON;:PULM:STAT?", "1"},
      {":PULM OFF;:PULM?", "1"},
      {":SOUR:STEP:STAT ON;:PULM?;:STEP?", "0;1"},
      {"RAMP ON;:RAMP?;:STEP?", "1;0"},
      // Pulse: times in seconds, a bare number in microseconds; the width and period drag
      // each other.
      {":PULM:TRIG:TYPE SING;:PULM:TRIG:TYPE?", "single"},
      {":PULM:INT:PWID 10;:PULM:INT:PWID?", "1e-05"},
      {":PULM:INT:PER 500ms;:PULM:INT:PWID 1s;:PULM:INT:PER?", "1"},
      {":PULM:INT:PER 100ms;:PULM:INT:PWID?;:PULM:INT:PER?", "0.1;0.1"},
      {":PULM:INT:PWID 0.01us;:PULM:INT:PWID?", "1e-07"},
      // Step sweep.
      {":STEP:TRIG:TYPE sing;:STEP:TRIG:TYPE?", "single"},
      {":STEP:TYPE FREQAMPL;:STEP:TYPE?", "freqampl"},
      {":STEP:FREQ:STAR 10 MHz;:STEP:FREQ:STAR?", "3e+07"},
      {":STEP:FREQ:STOP 2.5 GHz;:STEP:FREQ:STOP?", "2.5e+09"},
      {":STEP:POIN 1;:STEP:POIN?", "2"},
      {":STEP:POIN 20000;:STEP:POIN?", "10001"},
      {":STEP:AMPL:STAR 12.5;:STEP:AMPL:STAR?", "12.5"},
      {":STEP:AMPL:STOP -130;:STEP:AMPL:STOP?", "-130"},
      {":STEP:DWEL 20 s;:STEP:DWEL?", "10"},
      {":STEP:DWEL 1;:STEP:DWEL?", "1e-06"},
      // Ramp sweep; the period can be set but not read.
      {"RAMP:TRIG:TYPE SINGLE;:RAMP:TRIG:TYPE?", "single"},
      {"RAMP:FREQ:SPAN 100 MHz;:RAMP:FREQ:SPAN?", "4e+07"},
      {"RAMP:SWE:TIME 500ms;:RAMP:SWE:TIME?", "0.5"},
      {"RAMP:SWE:PER 200ms;:RAMP:SWE:PER?;:SYST:VER?", "1.0.5"},
      {":SYST:ERR:COUN?", "0"},
  };
  for (const auto& [line, reply] : rows) EXPECT_EQ(client.query(line), reply) << line.toStdString();
  EXPECT_EQ(central.currentMode(), 6);
  EXPECT_DOUBLE_EQ(ramp->sweepPeriod(), 0.5);
  EXPECT_DOUBLE_EQ(step->points(), 10001);

  const std::vector<std::pair<QString, QString>> refused = {
      {":STEP:TYPE sweep", "-2,Invalid parameter;Expected step sweep type"},
      {":PULM:TRIG:TYPE once", "-2,Invalid parameter;Expected trigger type"},
      {"RAMP:TRIG:TYPE freq", "-2,Invalid parameter;Expected trigger type"},
  };
  for (const auto& [line, entry] : refused) {
    EXPECT_EQ(client.query(line + ";:SYST:ERR?"), entry) << line.toStdString();
  }
  EXPECT_EQ(client.query(":STEP:TYPE?;:PULM:TRIG:TYPE?;:RAMP:TRIG:TYPE?"),
            "freqampl;single;single");
}

}  // namespace
