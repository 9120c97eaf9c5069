// SPDX-License-Identifier: MIT
// ModeViewMultitone: form, clamps and the product rule, defaults, seed enabling, presets.
#include "modes/multitone/mode_view_multitone.h"

#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

class MultitoneViewTest : public ::testing::Test {
protected:
  bool seedEnabled() const { return view.findChildren<IntLineEdit*>().at(0)->isEnabled(); }
  void expect(int count, double spacing, double notch) const {
    EXPECT_EQ(view.toneCount(), count);
    EXPECT_DOUBLE_EQ(view.freqSpacing(), spacing);
    EXPECT_DOUBLE_EQ(view.notchWidth(), notch);
  }

  ModeViewMultitone view;
  QSignalSpy updated{&view, &ModeViewMultitone::updated};
};

TEST_F(MultitoneViewTest, FormAndConstruction) {
  auto* form = view.findChild<MyFormLayout*>();
  const QStringList labels = {"Enabled",    "Tone Phase",   "Seed",
                              "Tone Count", "Freq Spacing", "Notch Width"};
  ASSERT_EQ(form->rowCount(), labels.size());
  for (int row = 0; row < labels.size(); ++row)
    EXPECT_EQ(qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget())->text(),
              labels[row]);
  auto* combo = view.findChild<MyComboBox*>();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(combo->itemData(i).toInt(), i);
  EXPECT_EQ(combo->currentText(), "Fixed");
  EXPECT_EQ(combo->itemText(2), "Parabolic");
  EXPECT_EQ(view.phaseSeed(), 23);
  EXPECT_FALSE(seedEnabled());
  EXPECT_DOUBLE_EQ(view.freqSpacing(), 1000.0);
}

// Each slot clamps, keeps tone count x spacing within 4e7 Hz against the other value, emits once.
TEST_F(MultitoneViewTest, SlotsClampAndKeepTheProductWithin40MHz) {
  struct Step {
    std::function<void(ModeViewMultitone&)> act;
    int count;
    double spacing, notch;
  };
  const Step steps[] = {
      {[](auto& v) { v.setFreqSpacing(1e6); }, 0, 1e6, 0},
      {[](auto& v) { v.setToneCount(0); }, 1, 1e6, 0},
      {[](auto& v) { v.setToneCount(41); }, 40, 1e6, 0},
      {[](auto& v) { v.setFreqSpacing(1e5); }, 40, 1e5, 0},
      {[](auto& v) { v.setToneCount(4001); }, 400, 1e5, 0},   // reduced by the spacing
      {[](auto& v) { v.setFreqSpacing(3e7); }, 400, 1e5, 0},  // 2e7, then 4e7 / 400
      {[](auto& v) { v.setToneCount(3); }, 3, 1e5, 0},
      {[](auto& v) { v.setFreqSpacing(3e7); }, 3, 4e7 / 3, 0},
      {[](auto& v) { v.setFreqSpacing(0.0); }, 3, 0.001, 0},
      {[](auto& v) { v.setToneCount(5000); }, 4001, 0.001, 0},
      {[](auto& v) { v.setNotchWidth(-5); }, 4001, 0.001, 0},
      {[](auto& v) { v.setNotchWidth(5e7); }, 4001, 0.001, 4e7},
  };
  for (const Step& step : steps) {
    updated.clear();
    step.act(view);
    EXPECT_EQ(updated.count(), 1);
    expect(step.count, step.spacing, step.notch);
  }
  view.setPhaseSeed(-9);  // taken as given
  EXPECT_EQ(view.phaseSeed(), -9);
}

TEST_F(MultitoneViewTest, DefaultsFollowThePresentSpacingAndSeedFollowsTheLaw) {
  for (const auto& [spacing, count] : {std::pair{1000.0, 3}, {1.5e7, 2}}) {  // 3 x 1.5e7 > 4e7
    view.setToneCount(1);
    view.setFreqSpacing(spacing);
    view.setNotchWidth(1e6);
    view.setPhase(MultiTonePhaseRandom);
    view.enabledCheck()->setChecked(true);
    updated.clear();
    view.setDefaults();
    expect(count, 1e6, 0.0);
    EXPECT_EQ(view.phase(), MultiTonePhaseParabolic);
    EXPECT_FALSE(seedEnabled());
    EXPECT_GE(updated.count(), 5);
    EXPECT_TRUE(view.enabledCheck()->isChecked());
  }
  for (const auto& [law, enabled] :
       {std::pair{MultiTonePhaseRandom, true}, {MultiTonePhaseFixed, false}}) {
    view.setPhase(law);
    EXPECT_EQ(view.settings().phase, law);
    EXPECT_EQ(seedEnabled(), enabled);
  }
  view.findChild<MyComboBox*>()->setCurrentIndex(
      1);  // the user's choice goes through setPhasePrivate
  EXPECT_TRUE(seedEnabled());
  EXPECT_EQ(view.phase(), MultiTonePhaseRandom);
}

// Presets are taken as they stand: no clamp, no product rule; absent keys keep the controls.
TEST_F(MultitoneViewTest, PresetsRoundTripUnclamped) {
  QTemporaryDir dir;
  view.setDefaults();
  view.setPhase(MultiTonePhaseRandom);
  view.setPhaseSeed(99);
  view.setToneCount(7);
  view.setFreqSpacing(2.5e5);
  view.setNotchWidth(3e5);
  {
    QSettings out(dir.filePath("all.ini"), QSettings::IniFormat);
    view.saveSettings(&out);
  }
  view.setDefaults();
  QSettings all(dir.filePath("all.ini"), QSettings::IniFormat);
  EXPECT_EQ(all.childGroups(), QStringList{"Mtone"});
  view.loadSettings(&all);
  EXPECT_EQ(view.phase(), MultiTonePhaseRandom);
  EXPECT_EQ(view.phaseSeed(), 99);
  expect(7, 2.5e5, 3e5);

  struct Row {
    std::vector<std::pair<QString, QVariant>> keys;
    int phase;
    bool seedEnabled;
    int count;
    double spacing;
  };
  const Row rows[] = {
      {{{"Ntones", 5000}, {"Fspacing", 1e5}}, 1, true, 5000, 1e5},
      {{{"Ntones", 0}, {"Fspacing", -3.0}, {"Phase", 0}}, 0, false, 0, -3.0},
      {{{"Phase", 1}}, 1, true, 0, -3.0},
      {{{"Phase", 7}}, 1, false, 0, -3.0},  // no item holds 7: the box keeps its selection
  };
  int n = 0;
  for (const Row& row : rows) {
    const QString file = dir.filePath(QString("part%1.ini").arg(n++));
    {
      QSettings out(file, QSettings::IniFormat);
      for (const auto& [key, value] : row.keys) out.setValue("Mtone/" + key, value);
    }
    QSettings in(file, QSettings::IniFormat);
    view.loadSettings(&in);
    EXPECT_EQ(view.phase(), row.phase);
    EXPECT_EQ(seedEnabled(), row.seedEnabled);
    expect(row.count, row.spacing, 3e5);
  }
}

}  // namespace
