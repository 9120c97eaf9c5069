// SPDX-License-Identifier: MIT
// The pulse unit in the panel: form, remote rows 72 to 79 with the coupling of width and period,
// the generator on the simulated device, and the "Pulse" preset group.
#include "modes/pulse/mode_view_pulse.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/my_list_widget.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using PulseUnitTest = UnitPanelTest<ModeViewPulse>;

TEST_F(PulseUnitTest, FormAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(3)->text(), "Pulse");
  EXPECT_EQ(formRows(*view),
            QStringList({"Enabled=QCheckBox", "Trigger Mode=MyComboBox", "Width=TimeEdit",
                         "Period=TimeEdit", "Duty Cycle=QLabel", "Continuous=0", "Single=1"}));
  checkRows(
      {
          {":PULM?;:PULM:TRIG:TYPE?;:PULM:INT:PWID?;:PULM:INT:PER?", "0;continuous;0.001;0.002",
           false, "50.000 %"},
          {":PULM OFF;:PULM?", "0", false},
          {":SOUR:PULM:STAT ON;:PULM:STAT?", "1", false},
          {":PULM OFF;:PULM?", "1", false},  // OFF never does anything
          {":PULM:TRIG:TYPE SING;:PULM:TRIG:TYPE?", "single", true},
          {":PULM:TRIG:TYPE once;:SYST:ERR?;:PULM:TRIG:TYPE?",
           "-2,Invalid parameter;Expected trigger type;single", false},
          {":PULM:INT:PER 3ms;:PULM:INT:PWID?;:PULM:INT:PER?", "0.001;0.003", true, "33.333 %"},
          {":PULM:INT:PWID 10;:PULM:INT:PWID?", "1e-05", true},  // a bare number in microseconds
          // The width drags the period up, the period drags the width down.
          {":PULM:INT:PER 100ms;:PULM:INT:PWID 0.5 s;:PULM:INT:PER?", "0.5", true, "100.000 %"},
          {":PULM:INT:PER 200ms;:PULM:INT:PWID?;:PULM:INT:PER?", "0.2;0.2", true},
          {":PULM:INT:PER 5 s;:PULM:INT:PWID 0.01us;:PULM:INT:PWID?;:PULM:INT:PER?", "1e-07;1",
           true, "0.000 %"},
          {":PULM:INT:PER 0.05us;:PULM:INT:PER?", "1e-07", true, "100.000 %"},
      },
      [&] { return view->dutyCycleText(); });
  EXPECT_EQ(central.currentMode(), 3);
  // An item that doesn't exist leaves the selection and still reports.
  QSignalSpy updated(view, &ModeWidget::updated);
  view->setTriggerType(static_cast<TriggerType>(7));
  EXPECT_EQ(updated.count(), 1);
  EXPECT_EQ(view->triggerType(), TriggerSingle);
}

TEST_F(PulseUnitTest, PlaysAtTheBentRateAndOncePerTrigger) {
  // 4938 samples of width at 39997800.36/s; a period of 2.5e-4 s holds 9999 of them.
  client.command(":PULM:INT:PWID 0.000123456789s;:PULM:INT:PER 0.00025s");
  checkContinuousThenSingle(":PULM ON", ":PULM:TRIG:TYPE SING", 39997800.36397998, 9998);
}

TEST_F(PulseUnitTest, PresetGroup) {
  client.command(":PULM:TRIG:TYPE SING;:PULM:INT:PER 250 ms;:PULM:INT:PWID 1.5us");
  const QString stored = "Period=0.25|Trigger=1|Width=1.5e-06";
  EXPECT_EQ(savedGroup("Pulse"), stored);
  QSignalSpy updated(view, &ModeWidget::updated);
  central.presetButtonPressed();
  EXPECT_EQ(updated.count(), 0) << "the defaults are set quietly";
  EXPECT_EQ(savedGroup("Pulse", "defaults.ini"), "Period=0.002|Trigger=0|Width=0.001");
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("Pulse", "again.ini"), stored);
  // The width is read first and drags the period up; the stored period then lowers it again.
  loadText("[Pulse]\nTrigger=5\nWidth=0.5\nPeriod=0.1\n");
  EXPECT_EQ(savedGroup("Pulse"), "Period=0.1|Trigger=1|Width=0.1");
  EXPECT_EQ(view->dutyCycleText(), "100.000 %");
  loadText("[Pulse]\nWidth=wide\nPeriod=2\n");
  EXPECT_EQ(savedGroup("Pulse"), "Period=1|Trigger=1|Width=1e-07");
}

}  // namespace
