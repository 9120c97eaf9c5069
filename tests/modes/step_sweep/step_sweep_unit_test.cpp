// SPDX-License-Identifier: MIT
// The step sweep unit in the panel: form, remote rows 92 to 109, the device calls of its own
// loop on the simulated device, and the "StepSweep" preset group.
#include "modes/step_sweep/mode_view_step_sweep.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/my_list_widget.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

namespace {

using StepSweepUnitTest = UnitPanelTest<ModeViewStepSweep>;

TEST_F(StepSweepUnitTest, FormAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(5)->text(), "Step Sweep");
  EXPECT_EQ(
      formRows(*view),
      QStringList({"Enabled=QCheckBox", "Trigger Mode=MyComboBox", "Sweep Type=MyComboBox",
                   "Start Freq=FrequencyEdit", "Stop Freq=FrequencyEdit", "Points=IntLineEdit",
                   "Start Level (dBm)=DoubleEdit", "Stop Level (dBm)=DoubleEdit",
                   "Dwell Time=TimeEdit", "Continuous=0", "Single=1", "Freq=0", "Freq & Ampl=1"}));
  checkRows({
      {":STEP?;:STEP:TRIG:TYPE?;:STEP:TYPE?;:STEP:FREQ:STAR?;:STEP:FREQ:STOP?;:STEP:POIN?",
       "0;continuous;freq;1e+09;2e+09;201", false},
      {":STEP:AMPL:STAR?;:STEP:AMPL:STOP?;:STEP:DWEL?", "-20;-20;0.001", false},
      {":SOUR:STEP:STAT ON;:STEP:STAT?;:AM?", "1;0", false},
      {":STEP:TRIG:TYPE sing;:STEP:TRIG:TYPE?", "single", true},
      {":STEP:TYPE FREQAMPL;:STEP:TYPE?", "freqampl", true},
      {":STEP:TYPE sweep;:SYST:ERR?;:STEP:TYPE?",
       "-2,Invalid parameter;Expected step sweep type;freqampl", false},
      {":STEP:FREQ:STAR 10 MHz;:STEP:FREQ:STAR?", "3e+07", true},
      {":STEP:FREQ:STOP 7 GHz;:STEP:FREQ:STOP?", "6e+09", true},
      {":STEP:FREQ:STOP 25 MHz;:STEP:FREQ:STOP?", "3e+07", true},
      {":STEP:POIN 1;:STEP:POIN?", "2", true},
      {":STEP:POIN 20000;:STEP:POIN?", "10001", true},
      {":STEP:AMPL:STAR 12.5;:STEP:AMPL:STAR?", "12.5", true},  // levels have no range
      {":STEP:AMPL:STOP -130;:STEP:AMPL:STOP?", "-130", true},
      {":STEP:DWEL 20 s;:STEP:DWEL?", "10", true},
      {":STEP:DWEL 0;:STEP:DWEL?", "1e-06", true},
      {":STEP:DWEL 2.5;:STEP:DWEL?", "2.5e-06", true},  // a bare number in microseconds
  });
  EXPECT_EQ(central.currentMode(), 5);
}

TEST_F(StepSweepUnitTest, SingleSweepRunsOncePerTriggerPointByPoint) {
  client.command(
      ":STEP:TRIG:TYPE SING;:STEP:TYPE FREQAMPL;:STEP:FREQ:STAR 1 GHz;"
      ":STEP:FREQ:STOP 2 GHz;:STEP:POIN 3;:STEP:AMPL:STAR -10;:STEP:AMPL:STOP -30;"
      ":STEP:DWEL 1us");
  connectAndEnable();
  restart(":STEP ON", 5e7);
  QTest::qWait(50);
  const std::vector<std::string> names = {"krtSetFrequency", "krtSetLevel", "krtSubmitIQ",
                                          "krtSubmitTrigger", "krtFlushAndWait"};
  EXPECT_TRUE(played(names).empty()) << "nothing before the trigger";
  // A dwell of 1e-6 s is 50 samples.
  const Calls sweep = {{"krtSetFrequency", 1e9},   {"krtSetLevel", -10}, {"krtSubmitIQ", 50},
                       {"krtSetFrequency", 1.5e9}, {"krtSetLevel", -20}, {"krtSubmitIQ", 50},
                       {"krtSetFrequency", 2e9},   {"krtSetLevel", -30}, {"krtSubmitIQ", 50},
                       {"krtFlushAndWait", 0}};
  client.command("*TRG");
  ASSERT_TRUE(waitUntil([&] { return played({"krtFlushAndWait"}).size() == 1; }));
  QTest::qWait(30);
  EXPECT_EQ(played(names), sweep);
  central.triggerPressed();
  ASSERT_TRUE(waitUntil([&] { return played({"krtFlushAndWait"}).size() == 2; }));
  Calls twice = sweep;
  twice.insert(twice.end(), sweep.begin(), sweep.end());
  EXPECT_EQ(played(names), twice);
}

TEST_F(StepSweepUnitTest, ContinuousFreqSweepAlternatesAtThePanelLevel) {
  // Downwards over two points; a "Freq" sweep ignores its level controls.
  client.command(
      ":POW -7.5;:STEP:FREQ:STAR 2 GHz;:STEP:FREQ:STOP 1 GHz;:STEP:POIN 2;"
      ":STEP:AMPL:STAR 5;:STEP:AMPL:STOP 3");
  connectAndEnable();
  restart(":STEP ON", 5e7);
  ASSERT_TRUE(waitUntil([&] { return played({"krtSetFrequency"}).size() >= 6; }));
  central.stopStreaming();
  // No flush at the turn either.
  const Calls calls = played({"krtSetFrequency", "krtSetLevel", "krtSubmitIQ", "krtFlushAndWait"});
  Calls expected;
  for (double frequency : {2e9, 1e9, 2e9, 1e9, 2e9, 1e9})
    expected.insert(expected.end(),
                    {{"krtSetFrequency", frequency}, {"krtSetLevel", -7.5}, {"krtSubmitIQ", 5e4}});
  ASSERT_GE(calls.size(), expected.size());
  EXPECT_EQ(Calls(calls.begin(), calls.begin() + expected.size()), expected);
}

TEST_F(StepSweepUnitTest, LongDwellGoesInPiecesUntilStoppedOrLost) {
  std::atomic<int> lost{0};
  QObject::connect(
      &central, &CentralWidget::deviceConnectionLost, &central, [&] { ++lost; },
      Qt::DirectConnection);
  connectAndEnable();
  restart(":STEP:DWEL 10 s;:STEP ON", 5e7);
  ASSERT_TRUE(waitUntil([&] { return played({"krtSubmitIQ"}).size() >= 3; }));
  QElapsedTimer stop;
  stop.start();
  central.stopStreaming();
  EXPECT_LT(stop.elapsed(), 1000) << "a stop takes effect within a piece of 10 ms";
  // 5e8 samples at the first point, fed in pieces of 500000.
  const Calls calls = played({"krtSetFrequency", "krtSubmitIQ"});
  EXPECT_EQ(calls[0], Call("krtSetFrequency", 1e9));
  EXPECT_EQ(size_t(std::count(calls.begin(), calls.end(), Call("krtSubmitIQ", 5e5))),
            calls.size() - 1);

  log.mark();
  central.startStreamingQuiet();
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  std::ofstream(unplugPath()) << "unplugged";
  EXPECT_TRUE(waitUntil([&] { return lost.load() == 1; }));
  // The thread ends through the dispatch's abort, as after any stop.
  EXPECT_TRUE(waitUntil([&] { return log.sequence().back() == "krtAbort"; }));
}

TEST_F(StepSweepUnitTest, PresetGroup) {
  client.command(
      ":STEP:TRIG:TYPE SING;:STEP:TYPE FREQAMPL;:STEP:FREQ:STAR 2.5 GHz;"
      ":STEP:FREQ:STOP 1.25 GHz;:STEP:POIN 17;:STEP:AMPL:STAR -3.5;"
      ":STEP:AMPL:STOP -42.25;:STEP:DWEL 125 ms");
  const QString stored =
      "DwellTime=0.125|Points=17|StartAmpl=-3.5|StartFreq=2.5e+09|StopAmpl=-42.25|"
      "StopFreq=1.25e+09|SweepType=1|TriggerMode=1";
  EXPECT_EQ(savedGroup("StepSweep"), stored);
  central.presetButtonPressed();
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("StepSweep", "again.ini"), stored);
  loadText(
      "[StepSweep]\nStartFreq=1\nStopFreq=1e10\nPoints=many\nStartAmpl=99\n"
      "DwellTime=100\nSweepType=9\n");
  EXPECT_EQ(savedGroup("StepSweep"),
            "DwellTime=10|Points=2|StartAmpl=99|StartFreq=3e+07|StopAmpl=-42.25|"
            "StopFreq=6e+09|SweepType=1|TriggerMode=1");
}

}  // namespace
