// SPDX-License-Identifier: MIT
// The AM and FM units in the panel: forms, remote rows 56 to 71 with their clamps and the FM
// coupling, user entries, the generators on the simulated device, and the preset groups.
#include "modes/am_fm/mode_view_am.h"
#include "modes/am_fm/mode_view_fm.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_list_widget.h"

#include <QCheckBox>

#include <gtest/gtest.h>

namespace {

class AmFmUnitTest : public UnitPanelTest<ModeViewAM> {
protected:
  ModeViewFM* fm = central.findChild<ModeViewFM*>();
};

TEST_F(AmFmUnitTest, FormsAndRemoteRows) {
  auto* list = central.findChild<MyListWidget*>();
  EXPECT_EQ(list->findModeRow(1)->text(), "AM");
  EXPECT_EQ(list->row(list->findModeRow(1)) + 1, list->row(list->findModeRow(2)));
  EXPECT_EQ(list->findModeRow(2)->text(), "FM");
  const QStringList shapes = {"Sine=0", "Square=1", "Triangle=2", "Ramp=3"};
  EXPECT_EQ(formRows(*view), QStringList({"Enabled=QCheckBox", "Rate=FrequencyEdit",
                                          "Depth(%)=DoubleEdit", "Shape=MyComboBox"}) +
                                 shapes);
  EXPECT_EQ(formRows(*fm), QStringList({"Enabled=QCheckBox", "Rate=FrequencyEdit",
                                        "Deviation=FrequencyEdit", "Shape=MyComboBox"}) +
                               shapes);
  // `updates` is that of the AM view.
  checkRows({
      {":AM?;:FM?;:AM:FREQ?;:AM:DEPT?;:AM:SHAP?", "0;0;1000;50;sine", false},
      {":AM OFF;:AM?", "0", false},  // OFF never does anything
      {":SOUR:AM:STAT ON;:AM:STAT?;:AM OFF;:AM?;:FM?", "1;;1;0", false},
      {":AM:FREQ 0.5;:AM:FREQ?", "1", true},
      {":SOUR:AM:FREQ 20 MHz;:AM:FREQ?", "1e+07", true},
      {":AM:FREQ 3051.7578125;:AM:FREQ?", "3051.7578125", true},
      {":AM:FREQ;:AM:FREQ?", "3051.7578125", false},  // no parameter: nothing
      {":AM:DEPT:LIN 150;:AM:DEPTH:LINEAR?", "100", true},
      {":AM:DEPT -3;:AM:DEPT?", "0", true},
      {":AM:DEPT nan;:AM:DEPT?", "0", false},  // a NaN is no number: nothing happens
      {":AM:SHAP squ;:AM:SHAP?;:AM:SHAPE TRI;:AM:SHAP?", "square;;triangle", true},
      {":AM:SHAP saw;:SYST:ERR?;:AM:SHAP?",
       "-2,Invalid parameter;Expected modulation shape;triangle", false},
      {":FM ON;:FM?;:AM?;:AM:FREQ 7;:AM:FREQ?", "1;0;;7", true},
      // The coupling keeps rate and deviation within a factor 1000, from either side.
      {":FM:DEV 1e6;:FM:FREQ?;:FM:FREQ 5;:FM:DEV?", "1000;;5000", false},
      {":FM:DEV 1e7;:FM:FREQ?;:FM:FREQ 20 MHz;:FM:DEV?", "10000;;1e+07", false},
      {":FM:DEV 0;:FM:FREQ?;:FM:FREQ 1e7;:FM:DEV?", "1000;;10000", false},
      {":FM:SHAP ramp;:FM:SHAP?;:FM:SHAP bogus;:SYST:ERR?",
       "ramp;;-2,Invalid parameter;Expected modulation shape", false},
  });
  EXPECT_TRUE(fm->enabledCheck()->isChecked());
}

TEST_F(AmFmUnitTest, UserEntriesReachTheSlots) {
  view->depthEdit()->setText("42");
  emit view->depthEdit()->editingFinished();
  view->shapeCombo()->setCurrentIndex(2);
  emit view->shapeCombo()->activated(2);
  fm->deviationEdit()->setText("2 MHz");
  emit fm->deviationEdit()->editingFinished();
  fm->rateEdit()->setText("5 Hz");
  emit fm->rateEdit()->editingFinished();
  EXPECT_EQ(client.query(":AM:DEPT?;:AM:SHAP?;:FM:FREQ?;:FM:DEV?"), "42;triangle;5;5000");
}

TEST_F(AmFmUnitTest, GeneratorsRetuneAtTheirRatesAndPlayInChunks) {
  connectAndEnable();
  central.setLevel(-13.0);
  // AM at 1000 Hz: 16384 samples at 16384000/s in chunks of a 60th of a second; then 1e7 Hz
  // at 4e7/s. The level is not corrected.
  restart(":AM ON", 16384000.0);
  EXPECT_TRUE(waitUntil([&] { return played({"krtSubmitIQ"}).size() > 1; }));
  EXPECT_EQ(played({"krtSetLevel", "krtSubmitIQ"})[1], Call("krtSubmitIQ", 273066));
  EXPECT_EQ(played({"krtSetLevel"}), (Calls{{"krtSetLevel", -13.0}}));
  restart(":AM:FREQ 1e7", 4e7);

  // Changes of the inactive FM view restart nothing.
  log.mark();
  client.command(":FM:FREQ 20;:FM:DEV 15000");
  EXPECT_TRUE(log.calls("krtSetTimebase").empty());
  // FM at 20 Hz, 15 kHz: W = 60000, N = 3000, S = 60000, chunks of 1000; then rate 1e7 with
  // deviation 1e4: N = 2 at 2e7/s, the buffer doubled to 1024.
  restart(":FM ON", 60000.0);
  EXPECT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
  EXPECT_EQ(played({"krtSubmitIQ"})[0], Call("krtSubmitIQ", 1000));
  EXPECT_EQ(played({"krtSetLevel"}), (Calls{{"krtSetLevel", -13.0}}));
  client.command(":FM:DEV 1e4");
  restart(":FM:FREQ 1e7", 2e7);
}

TEST_F(AmFmUnitTest, PresetGroups) {
  client.command(":AM:FREQ 250;:AM:DEPT 33;:AM:SHAP tri;:FM:FREQ 40;:FM:DEV 8000;:FM:SHAP ramp");
  const QString am = "Depth=33|Rate=250|Shape=2", fm = "Deviation=8000|Rate=40|Shape=3";
  EXPECT_EQ(savedGroup("AM"), am);
  EXPECT_EQ(savedGroup("FM"), fm);
  central.presetButtonPressed();
  EXPECT_EQ(savedGroup("AM", "defaults.ini"), "Depth=50|Rate=1000|Shape=0");
  EXPECT_EQ(savedGroup("FM", "defaults.ini"), "Deviation=1000|Rate=1000|Shape=0");
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("AM", "again.ini") + " " + savedGroup("FM", "again.ini"), am + " " + fm);

  // Hand-made groups go through the slots: clamped, coupled in key order, missing keys kept,
  // shapes without an item leave the combo boxes, and garbage reads as 0.
  loadText("[AM]\nRate=3e7\nDepth=250\nShape=7\n[FM]\nRate=5\nDeviation=1e6\nShape=-1\n");
  EXPECT_EQ(savedGroup("AM"), "Depth=100|Rate=1e+07|Shape=2");
  EXPECT_EQ(savedGroup("FM"), "Deviation=1e+06|Rate=1000|Shape=3");
  loadText("[AM]\nRate=fast\nDepth=deep\nShape=x\n[FM]\nDeviation=1e8\n");
  EXPECT_EQ(savedGroup("AM"), "Depth=0|Rate=1|Shape=0");
  EXPECT_EQ(savedGroup("FM"), "Deviation=1e+07|Rate=10000|Shape=3");
  EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0") << "the views clamp silently";
}

}  // namespace
