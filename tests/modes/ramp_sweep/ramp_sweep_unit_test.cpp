// SPDX-License-Identifier: MIT
// The ramp sweep unit in the panel: form, remote rows 110 to 119 with the period never below the
// sweep time, the generator on the simulated device, and the "RampSweep" preset group.
#include "modes/ramp_sweep/mode_view_ramp_sweep.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/my_list_widget.h"

#include <gtest/gtest.h>

namespace {

using RampSweepUnitTest = UnitPanelTest<ModeViewRampSweep>;

TEST_F(RampSweepUnitTest, FormAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(6)->text(), "Ramp Sweep");
  EXPECT_EQ(formRows(*view),
            QStringList({"Enabled=QCheckBox", "Trigger Mode=MyComboBox", "Span=FrequencyEdit",
                         "Sweep Time=TimeEdit", "Period=TimeEdit", "Continuous=0", "Single=1"}));
  // The period has no query: its row 119 is never reached, so a query of it answers nothing.
  checkRows(
      {
          {"RAMP?;:RAMP:TRIG:TYPE?;:RAMP:FREQ:SPAN?;:RAMP:SWE:TIME?", "0;continuous;2e+07;0.001",
           false, "0.001"},
          {"SOUR:RAMP:STAT ON;:RAMP:STAT?;:AM?", "1;0", false, "0.001"},
          {"RAMP:TRIG:TYPE SINGLE;:RAMP:TRIG:TYPE?", "single", true, "0.001"},
          {"RAMP:FREQ:SPAN 100 MHz;:RAMP:FREQ:SPAN?", "4e+07", true, "0.001"},
          {"RAMP:FREQ:SPAN 0.1;:RAMP:FREQ:SPAN?", "1", true, "0.001"},
          {"RAMP:SWE:TIME 500ms;:RAMP:SWE:TIME?", "0.5", true, "0.5"},  // raises the period
          {"RAMP:SWE:TIME 100ms;:RAMP:SWE:TIME?", "0.1", true, "0.5"},  // lowering keeps it
          {"RAMP:SWE:PER 50ms;:RAMP:SWE:PER?;:SYST:VER?", "1.0.5", true, "0.1"},
          {"RAMP:SWE:PER 3 s;:SYST:VER?", "1.0.5", true, "1"},
          {"RAMP:SWE:TIME 0;:RAMP:SWE:TIME?", "1e-06", true, "1"},
          {"RAMP:SWE:TIME 2 s;:RAMP:SWE:TIME?", "1", true, "1"},
      },
      [&] { return QString::number(view->sweepPeriod()); });
  EXPECT_EQ(central.currentMode(), 6);
}

TEST_F(RampSweepUnitTest, PlaysAt5e7AndOncePerTrigger) {
  // The default sweep of 1 ms is 50000 samples.
  checkContinuousThenSingle("RAMP ON", "RAMP:TRIG:TYPE SING", 5e7, 49999);
}

TEST_F(RampSweepUnitTest, PresetGroup) {
  client.command(
      "RAMP:TRIG:TYPE SING;:RAMP:FREQ:SPAN 3.5 MHz;:RAMP:SWE:TIME 20 ms;"
      ":RAMP:SWE:PER 750 ms");
  const QString stored = "Period=0.75|Span=3500000|SweepTime=0.02|TriggerMode=1";
  EXPECT_EQ(savedGroup("RampSweep"), stored);
  central.presetButtonPressed();
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("RampSweep", "again.ini"), stored);
  loadText("[RampSweep]\nTriggerMode=4\nSpan=none\nSweepTime=0.9\nPeriod=0.2\n");
  EXPECT_EQ(savedGroup("RampSweep"), "Period=0.9|Span=1|SweepTime=0.9|TriggerMode=1");
}

}  // namespace
