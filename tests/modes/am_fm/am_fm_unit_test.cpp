// SPDX-License-Identifier: MIT
// AM and FM inside the panel: remote rows 56 to 71 through a real TCP client, the generators'
// retunes and chunks on the simulated device, and the "AM" and "FM" preset groups.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "core/panel_fixture.h"
#include "core/scpi_client.h"
#include "modes/am_fm/mode_view_am.h"
#include "modes/am_fm/mode_view_fm.h"
#include "modes/my_stacked_widget.h"
#include "shell/error_queue.h"
#include "support/events_log.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_list_widget.h"

#include <QCheckBox>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

namespace {

class AmFmModeTest : public PanelFixture {
protected:
  void SetUp() override {
    PanelFixture::SetUp();
    am = central.findChild<ModeViewAM*>();
    fm = central.findChild<ModeViewFM*>();
    ASSERT_NE(am, nullptr);
    ASSERT_NE(fm, nullptr);
  }
  // Waits for a retune to `rate` followed by a chunk of `chunk` samples.
  bool waitForStream(double rate, int chunk) {
    return waitUntil([&] {
      bool tuned = false;
      for (auto& e : log.events()) {
        const std::string fn = e.value("fn", "");
        if (fn == "krtSetSampleRate") tuned = e["args"]["sampleRate"].get<double>() == rate;
        if (tuned && fn == "krtSubmitIQ" && e["args"]["count"].get<int>() == chunk) return true;
      }
      return false;
    });
  }

  ModeViewAM* am = nullptr;
  ModeViewFM* fm = nullptr;
};

TEST_F(AmFmModeTest, ViewsSitInTheListAndStackWithTheirDefaults) {
  auto* list = central.findChild<MyListWidget*>();
  ASSERT_NE(list, nullptr);
  ASSERT_NE(list->findModeRow(1), nullptr);
  ASSERT_NE(list->findModeRow(2), nullptr);
  EXPECT_EQ(list->findModeRow(1)->text(), "AM");
  EXPECT_EQ(list->findModeRow(2)->text(), "FM");
  EXPECT_EQ(list->row(list->findModeRow(1)) + 1, list->row(list->findModeRow(2)));
  auto* stack = central.findChild<MyStackedWidget*>();
  EXPECT_EQ(stack->findMode(1), am);
  EXPECT_EQ(stack->findMode(2), fm);
  // CentralWidget applies every view's defaults at the end of its construction.
  EXPECT_EQ(am->rate(), 1000.0);
  EXPECT_EQ(am->depth(), 50.0);
  EXPECT_EQ(am->shape(), ModShapeSine);
  EXPECT_EQ(fm->rate(), 1000.0);
  EXPECT_EQ(fm->deviation(), 1000.0);
  EXPECT_EQ(central.currentMode(), 0);
}

TEST_F(AmFmModeTest, RemoteRowsFiftySixToSeventyOne) {
  ScpiClient client(central.scpiServerPort());
  ASSERT_TRUE(client.connected);
  struct Row {
    QString command;  // empty: only the queries
    std::vector<std::pair<QString, QString>> queries;
    QString logged;  // the one error entry the command leaves, empty: none
  };
  const std::vector<Row> rows = {
      {"", {{":AM?", "0"}, {":FM?", "0"}, {":SOUR:AM:STAT?", "0"}}, ""},
      {":AM OFF", {{":AM?", "0"}}, ""},  // OFF never does anything
      {":AM ON", {{":AM?", "1"}, {":FM?", "0"}}, ""},
      {":AM OFF", {{":AM?", "1"}}, ""},  // edge case: OFF in AM mode leaves AM on
      {":SOURCE:AM:STATE ON", {{":AM:STAT?", "1"}}, ""},
      {":AM:FREQ 2 kHz", {{":AM:FREQ?", "2000"}}, ""},
      {":AM:FREQ 0.5", {{":AM:FREQ?", "1"}}, ""},
      {":SOUR:AM:FREQ 20 MHz", {{":AM:FREQ?", "1e+07"}}, ""},
      {":AM:FREQ 3051.7578125", {{":AM:FREQ?", "3051.7578125"}}, ""},
      {":AM:FREQ", {{":AM:FREQ?", "3051.7578125"}}, ""},  // no parameter: nothing
      {":AM:DEPT 75.5", {{":AM:DEPT?", "75.5"}, {":AM:DEPTH:LINEAR?", "75.5"}}, ""},
      {":AM:DEPT:LIN 150", {{":AM:DEPT?", "100"}}, ""},
      {":AM:DEPT -3", {{":AM:DEPT?", "0"}}, ""},
      {":AM:DEPT nan", {{":AM:DEPT?", "0"}}, ""},  // a NaN keeps the depth
      {":AM:DEPT 12.5", {{":AM:DEPT?", "12.5"}}, ""},
      {":AM:SHAP squ", {{":AM:SHAP?", "square"}}, ""},
      {":AM:SHAPE TRI", {{":AM:SHAP?", "triangle"}}, ""},
      {":AM:SHAP Ramp", {{":AM:SHAP?", "ramp"}}, ""},
      {":AM:SHAP saw", {{":AM:SHAP?", "ramp"}}, "-2,Invalid parameter;Expected modulation shape"},
      {":AM:SHAP", {{":AM:SHAP?", "ramp"}}, ""},  // no word: nothing, silently
      {":AM:SHAP sine", {{":AM:SHAP?", "sine"}}, ""},
      {":FM ON", {{":FM?", "1"}, {":AM?", "0"}, {":SOUR:FM:STAT?", "1"}}, ""},
      {":FM OFF", {{":FM?", "1"}}, ""},
      {":AM:FREQ 7", {{":AM:FREQ?", "7"}, {":FM?", "1"}}, ""},  // the other view still answers
      {":FM:DEV 1e6", {{":FM:DEV?", "1e+06"}, {":FM:FREQ?", "1000"}}, ""},
      // Rate 5 Hz with a deviation of 1e6 lowers the deviation to 5000.
      {":FM:FREQ 5", {{":FM:FREQ?", "5"}, {":FM:DEV?", "5000"}}, ""},
      {":FM:DEV 1e7", {{":FM:DEV?", "1e+07"}, {":FM:FREQ?", "10000"}}, ""},
      {":FM:FREQ 20 MHz", {{":FM:FREQ?", "1e+07"}, {":FM:DEV?", "1e+07"}}, ""},
      {":FM:DEV 0", {{":FM:DEV?", "1"}, {":FM:FREQ?", "1000"}}, ""},  // 1 Hz drags the rate down
      {":FM:SHAP tri", {{":FM:SHAP?", "triangle"}}, ""},
      {":FM:SHAP square", {{":FM:SHAP?", "square"}}, ""},
      {":FM:SHAP bogus",
       {{":FM:SHAP?", "square"}},
       "-2,Invalid parameter;Expected modulation shape"},
      {":AM ON", {{":AM?", "1"}, {":FM?", "0"}}, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.command.toStdString());
    if (!row.command.isEmpty()) client.command(row.command);
    for (const auto& [query, reply] : row.queries) EXPECT_EQ(client.query(query), reply) << query;
    if (row.logged.isEmpty()) {
      EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
    } else {
      EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "1");
      EXPECT_EQ(client.query(":SYST:ERR?"), row.logged);
    }
  }
  EXPECT_EQ(central.currentMode(), 1);
  EXPECT_TRUE(am->enabledCheck()->isChecked());
}

TEST_F(AmFmModeTest, GeneratorsRetuneAtTheirRatesAndPlayInChunks) {
  connectDevice();
  central.setLevel(-13.0);
  central.setRFEnabled(true);
  central.setModEnabled(true);

  // AM at 1000 Hz: 16384 samples at 16384000/s, chunks of a 60th of a second, level uncorrected.
  log.mark();
  am->enabledCheck()->click();
  ASSERT_EQ(central.currentMode(), 1);
  ASSERT_TRUE(waitForStream(16384000.0, 273066));
  EXPECT_DOUBLE_EQ(log.calls("krtSetLevel").back()["args"]["level"].get<double>(), -13.0);

  // A remote change of the active view restarts at the new rate: 1e7 Hz plays at 4e7/s.
  ScpiClient client(central.scpiServerPort());
  log.mark();
  client.command(":AM:FREQ 1e7");
  ASSERT_TRUE(waitForStream(4e7, 666666));

  // Changes of the inactive FM view restart nothing.
  log.mark();
  fm->setRate(20.0);
  fm->setDeviation(15000.0);
  EXPECT_TRUE(log.calls("krtSetTimebase").empty());

  // FM at 20 Hz, 15 kHz: W = 60000, N = 3000, S = 60000; chunk 1000.
  log.mark();
  client.command(":FM ON");
  ASSERT_TRUE(waitForStream(60000.0, 1000));
  EXPECT_DOUBLE_EQ(log.calls("krtSetLevel").back()["args"]["level"].get<double>(), -13.0);

  // Rate 1e7, deviation 1e4: N = 2 at 2e7/s, the buffer doubled to 1024.
  log.mark();
  client.command(":FM:DEV 1e4;:FM:FREQ 1e7");
  ASSERT_TRUE(waitForStream(2e7, 333333));
}

TEST_F(AmFmModeTest, PresetGroupsRoundTripThroughThePanel) {
  QTemporaryDir dir;
  const QString path = dir.filePath("amfm.ini");
  am->setRate(250.0);
  am->setDepth(33.0);
  am->setShape(ModShapeTriangle);
  fm->setRate(40.0);
  fm->setDeviation(8000.0);
  fm->setShape(ModShapeRamp);
  fm->enabledCheck()->click();
  ASSERT_EQ(central.currentMode(), 2);
  central.savePreset(path);
  {
    QSettings s(path, QSettings::IniFormat);
    EXPECT_EQ(s.value("Mode").toInt(), 2);
    EXPECT_TRUE(s.childGroups().contains("AM"));
    EXPECT_TRUE(s.childGroups().contains("FM"));
    EXPECT_EQ(s.value("AM/Rate").toDouble(), 250.0);
    EXPECT_EQ(s.value("AM/Depth").toDouble(), 33.0);
    EXPECT_EQ(s.value("AM/Shape").toInt(), 2);
    EXPECT_EQ(s.value("FM/Rate").toDouble(), 40.0);
    EXPECT_EQ(s.value("FM/Deviation").toDouble(), 8000.0);
    EXPECT_EQ(s.value("FM/Shape").toInt(), 3);
  }

  // The factory preset puts both views to their defaults and keeps the mode.
  central.presetButtonPressed();
  EXPECT_EQ(central.currentMode(), 2);
  EXPECT_EQ(am->rate(), 1000.0);
  EXPECT_EQ(am->depth(), 50.0);
  EXPECT_EQ(am->shape(), ModShapeSine);
  EXPECT_EQ(fm->rate(), 1000.0);
  EXPECT_EQ(fm->deviation(), 1000.0);
  EXPECT_EQ(fm->shape(), ModShapeSine);

  am->enabledCheck()->click();
  central.loadPreset(path);
  EXPECT_EQ(central.currentMode(), 2);
  EXPECT_EQ(am->rate(), 250.0);
  EXPECT_EQ(am->depth(), 33.0);
  EXPECT_EQ(am->shape(), ModShapeTriangle);
  EXPECT_EQ(fm->rate(), 40.0);
  EXPECT_EQ(fm->deviation(), 8000.0);
  EXPECT_EQ(fm->shape(), ModShapeRamp);

  // A hand-made file: clamped values, and shapes without an item leave the combo boxes.
  const QString odd = dir.filePath("odd.ini");
  {
    QSettings s(odd, QSettings::IniFormat);
    s.setValue("AM/Rate", 2e7);
    s.setValue("AM/Shape", 7);
    s.setValue("FM/Shape", 7);
    s.setValue("FM/Deviation", 1e8);
  }
  central.loadPreset(odd);
  EXPECT_EQ(am->rate(), 1e7);
  EXPECT_EQ(am->depth(), 33.0);
  EXPECT_EQ(am->shape(), ModShapeTriangle);
  EXPECT_EQ(am->shapeCombo()->currentText(), "Triangle");
  EXPECT_EQ(fm->shape(), ModShapeRamp);
  EXPECT_EQ(fm->deviation(), 1e7);
  EXPECT_EQ(fm->rate(), 10000.0) << "pulled into the deviation's window";
  EXPECT_EQ(errorLogCount(), 0) << "the views clamp silently";
}

}  // namespace
