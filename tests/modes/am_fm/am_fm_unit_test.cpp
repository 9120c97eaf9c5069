// SPDX-License-Identifier: MIT
// The AM and FM units in the panel: forms, remote rows 56 to 71 through a real TCP client, the
// generators' retunes and chunks on the simulated device, and the "AM" and "FM" preset groups.
#include "core/central_widget.h"
#include "core/panel_fixture.h"
#include "core/scpi_client.h"
#include "modes/am_fm/mode_view_am.h"
#include "modes/am_fm/mode_view_fm.h"
#include "modes/my_stacked_widget.h"
#include "shell/error_queue.h"
#include "support/form_rows.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_list_widget.h"

#include <QCheckBox>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace {

class AmFmUnitTest : public PanelFixture {
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

TEST_F(AmFmUnitTest, FormsListRowsAndDefaults) {
  const QStringList shapes = {"Sine=0", "Square=1", "Triangle=2", "Ramp=3"};
  EXPECT_EQ(formRows(*am), QStringList({"Enabled=QCheckBox", "Rate=FrequencyEdit",
                                        "Depth(%)=DoubleEdit", "Shape=MyComboBox"}) +
                               shapes);
  EXPECT_EQ(formRows(*fm), QStringList({"Enabled=QCheckBox", "Rate=FrequencyEdit",
                                        "Deviation=FrequencyEdit", "Shape=MyComboBox"}) +
                               shapes);
  auto* list = central.findChild<MyListWidget*>();
  ASSERT_NE(list->findModeRow(1), nullptr);
  EXPECT_EQ(list->findModeRow(1)->text(), "AM");
  EXPECT_EQ(list->row(list->findModeRow(1)) + 1, list->row(list->findModeRow(2)));
  EXPECT_EQ(list->findModeRow(2)->text(), "FM");
  auto* stack = central.findChild<MyStackedWidget*>();
  EXPECT_EQ(stack->findMode(1), am);
  EXPECT_EQ(stack->findMode(2), fm);
  // The panel applies every view's defaults at the end of its construction.
  EXPECT_EQ(am->settings().rateHz, 1000.0);
  EXPECT_EQ(am->settings().depthPercent, 50.0);
  EXPECT_EQ(fm->settings().deviationHz, 1000.0);
}

TEST_F(AmFmUnitTest, UserEntriesReachTheSlots) {
  QSignalSpy amUpdated(am, &ModeWidget::updated), fmUpdated(fm, &ModeWidget::updated);
  am->rateEdit()->setText("20 MHz");
  emit am->rateEdit()->editingFinished();
  am->depthEdit()->setText("42");
  emit am->depthEdit()->editingFinished();
  am->shapeCombo()->setCurrentIndex(2);
  emit am->shapeCombo()->activated(2);
  EXPECT_EQ(am->rate(), 1e7) << "clamped by the slot";
  EXPECT_EQ(am->depth(), 42.0);
  EXPECT_EQ(am->shape(), ModShapeTriangle);
  EXPECT_EQ(amUpdated.count(), 3);

  fm->deviationEdit()->setText("2 MHz");
  emit fm->deviationEdit()->editingFinished();
  EXPECT_EQ(fm->deviation(), 2e6);
  EXPECT_EQ(fm->rate(), 2000.0) << "pulled into the deviation's window";
  fm->rateEdit()->setText("5 Hz");
  emit fm->rateEdit()->editingFinished();
  EXPECT_EQ(fm->deviation(), 5000.0);
  fm->shapeCombo()->setCurrentIndex(3);
  emit fm->shapeCombo()->activated(3);
  EXPECT_EQ(fm->settings().shape, ModShapeRamp);
  EXPECT_EQ(fmUpdated.count(), 5) << "a coupled change emits for each control it moves";
}

TEST_F(AmFmUnitTest, RemoteRowsFiftySixToSeventyOne) {
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
      {":AM OFF", {{":AM?", "1"}}, ""},  // OFF in AM mode leaves AM on
      {":AM:FREQ 2 kHz", {{":AM:FREQ?", "2000"}}, ""},
      {":AM:FREQ 0.5", {{":AM:FREQ?", "1"}}, ""},
      {":SOUR:AM:FREQ 20 MHz", {{":AM:FREQ?", "1e+07"}}, ""},
      {":AM:FREQ 3051.7578125", {{":AM:FREQ?", "3051.7578125"}}, ""},
      {":AM:FREQ", {{":AM:FREQ?", "3051.7578125"}}, ""},  // no parameter: nothing
      {":AM:DEPT 75.5", {{":AM:DEPT?", "75.5"}, {":AM:DEPTH:LINEAR?", "75.5"}}, ""},
      {":AM:DEPT:LIN 150", {{":AM:DEPT?", "100"}}, ""},
      {":AM:DEPT -3", {{":AM:DEPT?", "0"}}, ""},
      {":AM:DEPT nan", {{":AM:DEPT?", "0"}}, ""},  // a NaN keeps the depth
      {":AM:SHAP squ", {{":AM:SHAP?", "square"}}, ""},
      {":AM:SHAPE TRI", {{":AM:SHAP?", "triangle"}}, ""},
      {":AM:SHAP Ramp", {{":AM:SHAP?", "ramp"}}, ""},
      {":AM:SHAP saw", {{":AM:SHAP?", "ramp"}}, "-2,Invalid parameter;Expected modulation shape"},
      {":AM:SHAP", {{":AM:SHAP?", "ramp"}}, ""},  // no word: nothing, silently
      {":FM ON", {{":FM?", "1"}, {":AM?", "0"}, {":SOUR:FM:STAT?", "1"}}, ""},
      {":AM:FREQ 7", {{":AM:FREQ?", "7"}, {":FM?", "1"}}, ""},  // the other view still answers
      // The coupling keeps rate and deviation within a factor 1000, from either side.
      {":FM:DEV 1e6", {{":FM:DEV?", "1e+06"}, {":FM:FREQ?", "1000"}}, ""},
      {":FM:FREQ 5", {{":FM:FREQ?", "5"}, {":FM:DEV?", "5000"}}, ""},
      {":FM:DEV 1e7", {{":FM:DEV?", "1e+07"}, {":FM:FREQ?", "10000"}}, ""},
      {":FM:FREQ 20 MHz", {{":FM:FREQ?", "1e+07"}, {":FM:DEV?", "1e+07"}}, ""},
      {":FM:DEV 0", {{":FM:DEV?", "1"}, {":FM:FREQ?", "1000"}}, ""},
      {":FM:FREQ 1e7", {{":FM:FREQ?", "1e+07"}, {":FM:DEV?", "10000"}}, ""},
      {":FM:SHAP tri", {{":FM:SHAP?", "triangle"}}, ""},
      {":FM:SHAP bogus",
       {{":FM:SHAP?", "triangle"}},
       "-2,Invalid parameter;Expected modulation shape"},
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
  EXPECT_TRUE(fm->enabledCheck()->isChecked());
}

TEST_F(AmFmUnitTest, GeneratorsRetuneAtTheirRatesAndPlayInChunks) {
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
}

TEST_F(AmFmUnitTest, PresetGroupsRoundTripAndLoadClamped) {
  QTemporaryDir dir;
  const QString path = dir.filePath("amfm.ini");
  am->setRate(250.0);
  am->setDepth(33.0);
  am->setShape(ModShapeTriangle);
  fm->setRate(40.0);
  fm->setDeviation(8000.0);
  fm->setShape(ModShapeRamp);
  fm->enabledCheck()->click();
  central.savePreset(path);
  {
    QSettings s(path, QSettings::IniFormat);
    const QStringList keys = {"AM/Depth",     "AM/Rate", "AM/Shape",
                              "FM/Deviation", "FM/Rate", "FM/Shape"};
    for (const QString& key : keys) EXPECT_TRUE(s.contains(key)) << key;
    EXPECT_EQ(s.value("AM/Shape").toInt(), 2);
    EXPECT_EQ(s.value("FM/Deviation").toDouble(), 8000.0);
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

  central.loadPreset(path);
  EXPECT_EQ(am->rate(), 250.0);
  EXPECT_EQ(am->depth(), 33.0);
  EXPECT_EQ(am->shape(), ModShapeTriangle);
  EXPECT_EQ(fm->rate(), 40.0);
  EXPECT_EQ(fm->deviation(), 8000.0);
  EXPECT_EQ(fm->shape(), ModShapeRamp);

  // Hand-made groups load through the slots: clamped, coupled, missing keys kept, shapes
  // without an item leaving the combo boxes, garbage read as 0.
  const struct {
    const char* name;
    std::vector<std::pair<QString, QVariant>> keys;
    double amRate, amDepth;
    int amShape;
    double fmRate, fmDeviation;
  } rows[] = {
      {"nothing", {}, 250, 33, ModShapeTriangle, 40, 8000},
      {"clamped",
       {{"AM/Rate", 3e7}, {"AM/Depth", 250}, {"FM/Deviation", 1e8}},
       1e7,
       100,
       ModShapeTriangle,
       10000,
       1e7},
      {"unknown shapes", {{"AM/Shape", 7}, {"FM/Shape", -1}}, 250, 33, ModShapeTriangle, 40, 8000},
      {"rate 5 then deviation 1e6",
       {{"FM/Rate", 5.0}, {"FM/Deviation", 1e6}},
       250,
       33,
       ModShapeTriangle,
       1000,
       1e6},
      {"garbage",
       {{"AM/Rate", "fast"}, {"AM/Depth", "deep"}, {"AM/Shape", "x"}},
       1,
       0,
       ModShapeSine,
       40,
       8000},
  };
  int n = 0;
  for (const auto& row : rows) {
    central.loadPreset(path);
    const QString odd = dir.filePath(QString("odd%1.ini").arg(n++));
    {
      QSettings s(odd, QSettings::IniFormat);
      for (const auto& [key, value] : row.keys) s.setValue(key, value);
    }
    central.loadPreset(odd);
    EXPECT_EQ(am->rate(), row.amRate) << row.name;
    EXPECT_EQ(am->depth(), row.amDepth) << row.name;
    EXPECT_EQ(am->shape(), row.amShape) << row.name;
    EXPECT_EQ(am->shapeCombo()->currentData().toInt(), row.amShape) << row.name;
    EXPECT_EQ(fm->rate(), row.fmRate) << row.name;
    EXPECT_EQ(fm->deviation(), row.fmDeviation) << row.name;
  }
  EXPECT_EQ(errorLogCount(), 0) << "the views clamp silently";
}

}  // namespace
