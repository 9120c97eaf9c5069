// SPDX-License-Identifier: MIT
// The AM and FM views: form, slots and clamps, the FM coupling of rate and deviation, presets.
#include "modes/am_fm/mode_view_am.h"
#include "modes/am_fm/mode_view_fm.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace {

const double nan = std::numeric_limits<double>::quiet_NaN();

// Labels and field widgets of a view's form, in row order.
std::vector<std::pair<QString, QWidget*>> formRows(ModeWidget& view) {
  std::vector<std::pair<QString, QWidget*>> rows;
  auto* form = view.findChild<QFormLayout*>();
  if (!form) return rows;
  for (int r = 0; r < form->rowCount(); ++r) {
    auto* label = qobject_cast<QLabel*>(form->itemAt(r, QFormLayout::LabelRole)->widget());
    rows.emplace_back(label ? label->text() : QString(),
                      form->itemAt(r, QFormLayout::FieldRole)->widget());
  }
  return rows;
}

QStringList itemTexts(MyComboBox* combo) {
  QStringList texts;
  for (int i = 0; i < combo->count(); ++i)
    texts << combo->itemText(i) + "=" + combo->itemData(i).toString();
  return texts;
}

TEST(ModeViewAM, FormConstructionAndDefaults) {
  ModeViewAM view;
  EXPECT_EQ(view.modeName(), "AM");
  EXPECT_EQ(view.modeIndex(), 1);
  const auto rows = formRows(view);
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0],
            std::make_pair(QString("Enabled"), static_cast<QWidget*>(view.enabledCheck())));
  EXPECT_EQ(rows[1], std::make_pair(QString("Rate"), static_cast<QWidget*>(view.rateEdit())));
  EXPECT_EQ(rows[2], std::make_pair(QString("Depth(%)"), static_cast<QWidget*>(view.depthEdit())));
  EXPECT_EQ(rows[3], std::make_pair(QString("Shape"), static_cast<QWidget*>(view.shapeCombo())));
  EXPECT_EQ(itemTexts(view.shapeCombo()),
            QStringList({"Sine=0", "Square=1", "Triangle=2", "Ramp=3"}));

  // Construction values; the constructor does not apply the defaults.
  EXPECT_EQ(view.rate(), 1000.0);
  EXPECT_EQ(view.depth(), 10.0);
  EXPECT_EQ(view.shape(), ModShapeSine);

  view.setShape(ModShapeRamp);
  view.setRate(77.0);
  view.enabledCheck()->setChecked(true);
  QSignalSpy updated(&view, &ModeWidget::updated);
  view.setDefaults();
  EXPECT_EQ(view.rate(), 1000.0);
  EXPECT_EQ(view.depth(), 50.0);
  EXPECT_EQ(view.shape(), ModShapeSine);
  EXPECT_EQ(view.shapeCombo()->currentText(), "Sine");
  EXPECT_EQ(updated.count(), 3) << "one updated() a control";
  EXPECT_TRUE(view.enabledCheck()->isChecked()) << "setDefaults leaves the enable box alone";
}

TEST(ModeViewAM, SlotsClampStoreAndEmitOnce) {
  ModeViewAM view;
  struct Row {
    const char* name;
    std::function<void()> act;
    double rate, depth;
  };
  const std::vector<Row> rows = {
      {"rate in range", [&] { view.setRate(2500.0); }, 2500.0, 10.0},
      {"rate below", [&] { view.setRate(0.25); }, 1.0, 10.0},
      {"rate above", [&] { view.setRate(2e7); }, 1e7, 10.0},
      {"rate NaN keeps", [&] { view.setRate(nan); }, 1e7, 10.0},
      {"depth in range", [&] { view.setDepth(33.25); }, 1e7, 33.25},
      {"depth below", [&] { view.setDepth(-4.0); }, 1e7, 0.0},
      {"depth above", [&] { view.setDepth(100.5); }, 1e7, 100.0},
      {"depth NaN keeps", [&] { view.setDepth(nan); }, 1e7, 100.0},
  };
  for (const Row& row : rows) {
    QSignalSpy updated(&view, &ModeWidget::updated);
    row.act();
    EXPECT_EQ(view.rate(), row.rate) << row.name;
    EXPECT_EQ(view.depth(), row.depth) << row.name;
    EXPECT_EQ(updated.count(), 1) << row.name;
    const AmSettings s = view.settings();
    EXPECT_EQ(s.rateHz, row.rate);
    EXPECT_EQ(s.depthPercent, row.depth);
  }
  // The edits show the stored values.
  EXPECT_EQ(view.depthEdit()->text(), "100");
}

TEST(ModeViewAM, EditsReachTheSlots) {
  ModeViewAM view;
  QSignalSpy updated(&view, &ModeWidget::updated);
  view.rateEdit()->setText("20 MHz");
  emit view.rateEdit()->editingFinished();
  EXPECT_EQ(view.rate(), 1e7) << "clamped by the slot";
  view.depthEdit()->setText("42");
  emit view.depthEdit()->editingFinished();
  EXPECT_EQ(view.depth(), 42.0);
  EXPECT_EQ(updated.count(), 2);
}

TEST(ModeViewAM, ShapeSlots) {
  ModeViewAM view;
  QSignalSpy updated(&view, &ModeWidget::updated);
  view.setShape(ModShapeTriangle);
  EXPECT_EQ(view.shape(), ModShapeTriangle);
  EXPECT_EQ(view.shapeCombo()->currentText(), "Triangle");
  EXPECT_EQ(updated.count(), 1);

  // A user's pick: the combo changes its item, then activated() reaches setShapePrivate.
  view.shapeCombo()->setCurrentIndex(1);
  emit view.shapeCombo()->activated(1);
  EXPECT_EQ(view.shape(), ModShapeSquare);
  EXPECT_EQ(updated.count(), 2);

  view.setShapePrivate(3);
  EXPECT_EQ(view.shape(), ModShapeSquare) << "setShapePrivate only emits";
  EXPECT_EQ(updated.count(), 3);
}

TEST(ModeViewFM, FormConstructionAndDefaults) {
  ModeViewFM view;
  EXPECT_EQ(view.modeName(), "FM");
  EXPECT_EQ(view.modeIndex(), 2);
  const auto rows = formRows(view);
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].first, "Enabled");
  EXPECT_EQ(rows[1], std::make_pair(QString("Rate"), static_cast<QWidget*>(view.rateEdit())));
  EXPECT_EQ(rows[2],
            std::make_pair(QString("Deviation"), static_cast<QWidget*>(view.deviationEdit())));
  EXPECT_EQ(rows[3], std::make_pair(QString("Shape"), static_cast<QWidget*>(view.shapeCombo())));
  EXPECT_EQ(itemTexts(view.shapeCombo()),
            QStringList({"Sine=0", "Square=1", "Triangle=2", "Ramp=3"}));
  EXPECT_EQ(view.rate(), 1000.0);
  EXPECT_EQ(view.deviation(), 1000.0);
  EXPECT_EQ(view.shape(), ModShapeSine);
}

TEST(ModeViewFM, RateAndDeviationStayWithinAFactorOfAThousand) {
  // Each row starts from the defaults (1000 Hz, 1000 Hz), runs its steps, and checks the pair
  // and the number of updated() of the last step.
  struct Step {
    bool rate;  // true: setRate, false: setDeviation
    double value;
  };
  struct Row {
    const char* name;
    std::vector<Step> steps;
    double rate, deviation;
    int updates;  // of the last step
  };
  const std::vector<Row> rows = {
      {"rate 5 with deviation 1e6 lowers it to 5000", {{false, 1e6}, {true, 5.0}}, 5.0, 5000.0, 2},
      {"rate 1e7 raises the deviation to 1e4", {{true, 1e7}}, 1e7, 1e4, 2},
      {"rate within the window moves nothing else", {{true, 20000.0}}, 20000.0, 1000.0, 1},
      {"rate 2000 with deviation 1 raises it to 2", {{false, 1.0}, {true, 2000.0}}, 2000.0, 2.0, 2},
      {"rate 1 with deviation 1e7 lowers it to 1000", {{false, 1e7}, {true, 1.0}}, 1.0, 1000.0, 2},
      {"deviation 1e7 pulls the rate up to 1e4", {{false, 1e7}}, 1e4, 1e7, 2},
      {"deviation 2e6 at rate 1 pulls it to 2000", {{true, 1.0}, {false, 2e6}}, 2000.0, 2e6, 2},
      {"deviation 0.5 is 1 and pulls rate 2000 to 1000",
       {{true, 2000.0}, {false, 0.5}},
       1000.0,
       1.0,
       2},
      {"deviation clamped to 1e7", {{true, 1e7}, {false, 5e7}}, 1e7, 1e7, 1},
      {"rate clamped to 1", {{true, -3.0}}, 1.0, 1000.0, 1},
      {"NaN rate keeps the rate", {{true, nan}}, 1000.0, 1000.0, 1},
      {"NaN deviation keeps the deviation", {{false, nan}}, 1000.0, 1000.0, 1},
  };
  for (const Row& row : rows) {
    ModeViewFM view;
    for (size_t k = 0; k < row.steps.size(); ++k) {
      QSignalSpy updated(&view, &ModeWidget::updated);
      const Step& step = row.steps[k];
      if (step.rate)
        view.setRate(step.value);
      else
        view.setDeviation(step.value);
      if (k + 1 == row.steps.size()) {
        EXPECT_EQ(updated.count(), row.updates) << row.name;
      }
    }
    EXPECT_EQ(view.rate(), row.rate) << row.name;
    EXPECT_EQ(view.deviation(), row.deviation) << row.name;
    EXPECT_GE(view.deviation(), view.rate() / 1000.0) << row.name;
    EXPECT_LE(view.deviation(), view.rate() * 1000.0) << row.name;
  }
}

TEST(ModeViewFM, DefaultsFromAnywhere) {
  ModeViewFM view;
  view.setRate(1e7);  // deviation 1e4
  view.setShape(ModShapeTriangle);
  view.enabledCheck()->setChecked(true);
  view.setDefaults();
  EXPECT_EQ(view.rate(), 1000.0);
  EXPECT_EQ(view.deviation(), 1000.0);
  EXPECT_EQ(view.shape(), ModShapeSine);
  EXPECT_TRUE(view.enabledCheck()->isChecked());

  view.setDeviation(1.0);
  view.setRate(1.0);
  view.setDefaults();
  EXPECT_EQ(view.rate(), 1000.0);
  EXPECT_EQ(view.deviation(), 1000.0);
}

TEST(ModeViewFM, ShapeSlots) {
  ModeViewFM view;
  QSignalSpy updated(&view, &ModeWidget::updated);
  view.setShape(ModShapeRamp);
  EXPECT_EQ(view.shape(), ModShapeRamp);
  view.shapeCombo()->setCurrentIndex(0);
  emit view.shapeCombo()->activated(0);
  EXPECT_EQ(view.settings().shape, ModShapeSine);
  EXPECT_EQ(updated.count(), 2);
}

// ---- Presets ----------------------------------------------------------------------------------

class AmFmPresetTest : public ::testing::Test {
protected:
  QString file(const QString& name) { return dir.filePath(name); }
  void write(const QString& path, const QString& group,
             const std::vector<std::pair<QString, QVariant>>& keys) {
    QSettings s(path, QSettings::IniFormat);
    s.beginGroup(group);
    for (const auto& [key, value] : keys) s.setValue(key, value);
    s.endGroup();
  }
  QTemporaryDir dir;
};

TEST_F(AmFmPresetTest, RoundTripWritesTheKeysOfThePart) {
  const QString path = file("round.ini");
  {
    ModeViewAM am;
    ModeViewFM fm;
    am.setRate(12345.5);
    am.setDepth(66.25);
    am.setShape(ModShapeRamp);
    fm.setRate(250.0);
    fm.setDeviation(75000.0);
    fm.setShape(ModShapeSquare);
    QSettings s(path, QSettings::IniFormat);
    am.saveSettings(&s);
    fm.saveSettings(&s);
  }
  {
    QSettings s(path, QSettings::IniFormat);
    EXPECT_EQ(s.childGroups(), QStringList({"AM", "FM"}));
    EXPECT_EQ(s.value("AM/Rate").toDouble(), 12345.5);
    EXPECT_EQ(s.value("AM/Depth").toDouble(), 66.25);
    EXPECT_EQ(s.value("AM/Shape").toInt(), 3);
    EXPECT_EQ(s.value("FM/Rate").toDouble(), 250.0);
    EXPECT_EQ(s.value("FM/Deviation").toDouble(), 75000.0);
    EXPECT_EQ(s.value("FM/Shape").toInt(), 1);
  }
  ModeViewAM am;
  ModeViewFM fm;
  QSignalSpy amUpdated(&am, &ModeWidget::updated), fmUpdated(&fm, &ModeWidget::updated);
  QSettings s(path, QSettings::IniFormat);
  am.loadSettings(&s);
  fm.loadSettings(&s);
  EXPECT_EQ(s.group(), "") << "the views close their groups";
  EXPECT_EQ(am.rate(), 12345.5);
  EXPECT_EQ(am.depth(), 66.25);
  EXPECT_EQ(am.shape(), ModShapeRamp);
  EXPECT_EQ(fm.rate(), 250.0);
  EXPECT_EQ(fm.deviation(), 75000.0);
  EXPECT_EQ(fm.shape(), ModShapeSquare);
  EXPECT_GE(amUpdated.count(), 1);
  EXPECT_GE(fmUpdated.count(), 1);
}

TEST_F(AmFmPresetTest, LoadClampsKeepsMissingKeysAndIgnoresUnknownShapes) {
  struct Row {
    const char* name;
    std::vector<std::pair<QString, QVariant>> keys;
    double rate, depth;
    int shape;
  };
  // The view starts at rate 500, depth 20, Triangle for each row.
  const std::vector<Row> rows = {
      {"empty group keeps everything", {}, 500.0, 20.0, ModShapeTriangle},
      {"only the depth", {{"Depth", 70.0}}, 500.0, 70.0, ModShapeTriangle},
      {"clamped above", {{"Rate", 3e7}, {"Depth", 250.0}}, 1e7, 100.0, ModShapeTriangle},
      {"clamped below", {{"Rate", 0.0}, {"Depth", -1.0}}, 1.0, 0.0, ModShapeTriangle},
      {"shape 7 leaves the combo", {{"Shape", 7}}, 500.0, 20.0, ModShapeTriangle},
      {"shape -1 leaves the combo", {{"Shape", -1}}, 500.0, 20.0, ModShapeTriangle},
      {"shape 1 selects Square", {{"Shape", 1}}, 500.0, 20.0, ModShapeSquare},
      {"garbage reads as 0, then clamps",
       {{"Rate", "fast"}, {"Depth", "deep"}, {"Shape", "x"}},
       1.0,
       0.0,
       ModShapeSine},
  };
  int n = 0;
  for (const Row& row : rows) {
    const QString path = file(QString("am%1.ini").arg(n++));
    write(path, "AM", row.keys);
    ModeViewAM view;
    view.setRate(500.0);
    view.setDepth(20.0);
    view.setShape(ModShapeTriangle);
    QSignalSpy updated(&view, &ModeWidget::updated);
    QSettings s(path, QSettings::IniFormat);
    view.loadSettings(&s);
    EXPECT_EQ(view.rate(), row.rate) << row.name;
    EXPECT_EQ(view.depth(), row.depth) << row.name;
    EXPECT_EQ(view.shape(), row.shape) << row.name;
    EXPECT_EQ(view.shapeCombo()->currentData().toInt(), row.shape) << row.name;
    EXPECT_GE(updated.count(), 1) << row.name;
  }
}

TEST_F(AmFmPresetTest, FmLoadGoesThroughTheCoupling) {
  struct Row {
    const char* name;
    std::vector<std::pair<QString, QVariant>> keys;
    double rate, deviation;
    int shape;
  };
  // The view starts at the defaults: 1000 Hz, 1000 Hz, Sine.
  const std::vector<Row> rows = {
      {"missing keys keep the values", {}, 1000.0, 1000.0, ModShapeSine},
      {"a consistent pair", {{"Rate", 20.0}, {"Deviation", 15000.0}}, 20.0, 15000.0, ModShapeSine},
      // "Rate" first through setRate, then "Deviation" pulls the rate into its window.
      {"rate 5 then deviation 1e6 pulls the rate to 1000",
       {{"Rate", 5.0}, {"Deviation", 1e6}},
       1000.0,
       1e6,
       ModShapeSine},
      {"deviation alone pulls the rate", {{"Deviation", 1e7}}, 1e4, 1e7, ModShapeSine},
      {"deviation clamped to 1", {{"Deviation", 0.0}}, 1000.0, 1.0, ModShapeSine},
      {"rate alone moves the deviation", {{"Rate", 1e7}}, 1e7, 1e4, ModShapeSine},
      {"shape 7 leaves the combo", {{"Shape", 7}}, 1000.0, 1000.0, ModShapeSine},
      {"shape 2", {{"Shape", 2}}, 1000.0, 1000.0, ModShapeTriangle},
  };
  int n = 0;
  for (const Row& row : rows) {
    const QString path = file(QString("fm%1.ini").arg(n++));
    write(path, "FM", row.keys);
    ModeViewFM view;
    QSettings s(path, QSettings::IniFormat);
    view.loadSettings(&s);
    EXPECT_EQ(view.rate(), row.rate) << row.name;
    EXPECT_EQ(view.deviation(), row.deviation) << row.name;
    EXPECT_EQ(view.shape(), row.shape) << row.name;
  }
}

}  // namespace
