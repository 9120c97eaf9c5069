// SPDX-License-Identifier: MIT
// Views of pulse, step sweep and ramp sweep: forms, clamps, couplings and preset groups.
#include "modes/pulse/mode_view_pulse.h"
#include "modes/ramp_sweep/mode_view_ramp_sweep.h"
#include "modes/step_sweep/mode_view_step_sweep.h"
#include "widgets/my_form_layout.h"

#include <QComboBox>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

namespace {

QStringList formLabels(ModeWidget& view) {
  QStringList labels;
  auto* form = view.findChild<MyFormLayout*>();
  if (!form) form = qobject_cast<MyFormLayout*>(view.layout()->itemAt(0)->layout());
  for (int row = 0; row < form->rowCount(); ++row)
    if (auto* label = qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget()))
      labels << label->text();
  return labels;
}

QStringList comboItems(QComboBox* box) {
  QStringList items;
  for (int i = 0; i < box->count(); ++i)
    items << box->itemText(i) + "=" + box->itemData(i).toString();
  return items;
}

TEST(PulseSweepViews, FormsInOrderWithTheirItems) {
  ModeViewPulse pulse;
  ModeViewStepSweep step;
  ModeViewRampSweep ramp;
  EXPECT_EQ(pulse.modeName(), "Pulse");
  EXPECT_EQ(pulse.modeIndex(), 3);
  EXPECT_EQ(step.modeName(), "Step Sweep");
  EXPECT_EQ(step.modeIndex(), 5);
  EXPECT_EQ(ramp.modeName(), "Ramp Sweep");
  EXPECT_EQ(ramp.modeIndex(), 6);
  EXPECT_EQ(formLabels(pulse),
            (QStringList{"Enabled", "Trigger Mode", "Width", "Period", "Duty Cycle"}));
  EXPECT_EQ(formLabels(step),
            (QStringList{"Enabled", "Trigger Mode", "Sweep Type", "Start Freq", "Stop Freq",
                         "Points", "Start Level (dBm)", "Stop Level (dBm)", "Dwell Time"}));
  EXPECT_EQ(formLabels(ramp),
            (QStringList{"Enabled", "Trigger Mode", "Span", "Sweep Time", "Period"}));
  const QStringList triggers{"Continuous=0", "Single=1"};
  const QList<QComboBox*> stepBoxes = step.findChildren<QComboBox*>();
  ASSERT_EQ(stepBoxes.size(), 2);
  EXPECT_EQ(comboItems(pulse.findChild<QComboBox*>()), triggers);
  EXPECT_EQ(comboItems(ramp.findChild<QComboBox*>()), triggers);
  EXPECT_EQ(comboItems(stepBoxes[0]), triggers);
  EXPECT_EQ(comboItems(stepBoxes[1]), (QStringList{"Freq=0", "Freq & Ampl=1"}));
}

// ---- Pulse ----------------------------------------------------------------------------------

TEST(ModeViewPulse, WidthAndPeriodDragEachOther) {
  const struct {
    const char* name;
    std::function<void(ModeViewPulse&)> act;
    double width, period;
    const char* duty;
  } cases[] = {
      {"defaults", [](ModeViewPulse&) {}, 0.001, 0.002, "50.000 %"},
      {"width above the period raises it",
       [](ModeViewPulse& v) {
         v.setPulsePeriod(0.1);
         v.setPulseWidth(0.5);
       },
       0.5, 0.5, "100.000 %"},
      {"period below the width lowers it", [](ModeViewPulse& v) { v.setPulsePeriod(0.0004); },
       0.0004, 0.0004, "100.000 %"},
      {"raising the period leaves the width", [](ModeViewPulse& v) { v.setPulsePeriod(0.003); },
       0.001, 0.003, "33.333 %"},
      {"clamped below", [](ModeViewPulse& v) { v.setPulsePeriod(1e-9); }, 1e-7, 1e-7, "100.000 %"},
      {"clamped above", [](ModeViewPulse& v) { v.setPulseWidth(5.0); }, 1.0, 1.0, "100.000 %"},
      {"smallest duty",
       [](ModeViewPulse& v) {
         v.setPulsePeriod(1.0);
         v.setPulseWidth(0.0);
       },
       1e-7, 1.0, "0.000 %"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ModeViewPulse view;
    view.setDefaults();
    c.act(view);
    EXPECT_DOUBLE_EQ(view.pulseWidth(), c.width);
    EXPECT_DOUBLE_EQ(view.pulsePeriod(), c.period);
    EXPECT_EQ(view.dutyCycleText(), c.duty);
  }
}

TEST(ModeViewPulse, DefaultsAreQuietAndSlotsReport) {
  ModeViewPulse view;
  view.setTriggerType(TriggerSingle);
  view.setPulseWidth(0.3);
  QSignalSpy spy(&view, &ModeWidget::updated);
  view.setDefaults();
  EXPECT_EQ(spy.count(), 0);
  EXPECT_EQ(view.triggerType(), TriggerContinuous);
  view.setTriggerType(TriggerSingle);
  EXPECT_EQ(spy.count(), 1);
  EXPECT_EQ(view.settings().trigger, TriggerSingle);
  // No item holds 7: the selection stays, the change is still reported.
  view.setTriggerType(static_cast<TriggerType>(7));
  EXPECT_EQ(spy.count(), 2);
  EXPECT_EQ(view.triggerType(), TriggerSingle);
}

// ---- Step sweep -----------------------------------------------------------------------------

TEST(ModeViewStepSweep, SlotsClampToTheirRangesAndReport) {
  ModeViewStepSweep view;
  view.setDefaults();
  const StepSweepSettings d = view.settings();
  EXPECT_EQ(std::make_tuple(d.trigger, d.type, d.startFreqHz, d.stopFreqHz, d.points),
            std::make_tuple(TriggerContinuous, StepSweepFreq, 1e9, 2e9, 201));
  EXPECT_EQ(std::make_tuple(d.startLevelDbm, d.stopLevelDbm, d.dwellSeconds),
            std::make_tuple(-20.0, -20.0, 0.001));
  QSignalSpy spy(&view, &ModeWidget::updated);
  const struct {
    const char* name;
    std::function<void()> set;
    std::function<double()> get;
    double expected;
  } cases[] = {
      {"start below", [&] { view.setStartFreq(1.0); }, [&] { return view.startFreq(); }, 3e7},
      {"stop above", [&] { view.setStopFreq(7e9); }, [&] { return view.stopFreq(); }, 6e9},
      {"stop below start", [&] { view.setStopFreq(5e8); }, [&] { return view.stopFreq(); }, 5e8},
      {"one point", [&] { view.setPoints(1); }, [&] { return view.points(); }, 2},
      {"too many points", [&] { view.setPoints(20000); }, [&] { return view.points(); }, 10001},
      {"levels have no range", [&] { view.setStartAmpl(55.5); }, [&] { return view.startAmpl(); },
       55.5},
      {"levels have no range", [&] { view.setStopAmpl(-300); }, [&] { return view.stopAmpl(); },
       -300},
      {"no dwell", [&] { view.setDwellTime(0.0); }, [&] { return view.dwellTime(); }, 1e-6},
      {"long dwell", [&] { view.setDwellTime(60.0); }, [&] { return view.dwellTime(); }, 10.0},
      {"sweep type", [&] { view.setSweepType(StepSweepFreqAmplitude); },
       [&] { return view.sweepType(); }, 1},
      {"trigger", [&] { view.setTriggerType(TriggerSingle); },
       [&] { return view.settings().trigger; }, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    spy.clear();
    c.set();
    EXPECT_EQ(c.get(), c.expected);
    EXPECT_EQ(spy.count(), 1);
  }
}

// ---- Ramp sweep -----------------------------------------------------------------------------

TEST(ModeViewRampSweep, PeriodNeverBelowTheSweepTime) {
  const struct {
    const char* name;
    std::function<void(ModeViewRampSweep&)> act;
    double span, sweepTime, period;
  } cases[] = {
      {"defaults", [](ModeViewRampSweep&) {}, 2e7, 0.001, 0.001},
      {"raising the sweep time raises the period",
       [](ModeViewRampSweep& v) { v.setSweepTime(0.5); }, 2e7, 0.5, 0.5},
      {"lowering the sweep time keeps the period",
       [](ModeViewRampSweep& v) {
         v.setSweepTime(0.5);
         v.setSweepTime(0.1);
       },
       2e7, 0.1, 0.5},
      {"period clamped to the sweep time",
       [](ModeViewRampSweep& v) {
         v.setSweepTime(0.2);
         v.setSweepPeriod(0.05);
       },
       2e7, 0.2, 0.2},
      {"period clamped to 1 s", [](ModeViewRampSweep& v) { v.setSweepPeriod(3.0); }, 2e7, 0.001,
       1.0},
      {"sweep time clamped",
       [](ModeViewRampSweep& v) {
         v.setSweepTime(0.0);
         v.setSweepPeriod(0.0);
       },
       2e7, 1e-6, 1e-6},
      {"span clamped below", [](ModeViewRampSweep& v) { v.setSpan(0.1); }, 1.0, 0.001, 0.001},
      {"span clamped above", [](ModeViewRampSweep& v) { v.setSpan(1e8); }, 4e7, 0.001, 0.001},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ModeViewRampSweep view;
    view.setDefaults();
    c.act(view);
    EXPECT_DOUBLE_EQ(view.span(), c.span);
    EXPECT_DOUBLE_EQ(view.sweepTime(), c.sweepTime);
    EXPECT_DOUBLE_EQ(view.sweepPeriod(), c.period);
  }
}

// ---- Presets --------------------------------------------------------------------------------

class PresetGroups : public ::testing::Test {
protected:
  QString file(const QString& name) const { return dir.filePath(name); }
  void write(const QString& path, const QString& group,
             const std::vector<std::pair<QString, QVariant>>& keys) {
    QSettings s(path, QSettings::IniFormat);
    s.beginGroup(group);
    for (const auto& [key, value] : keys) s.setValue(key, value);
    s.endGroup();
  }
  QTemporaryDir dir;
};

TEST_F(PresetGroups, RoundTripOfAllThreeViews) {
  ModeViewPulse pulse;
  ModeViewStepSweep step;
  ModeViewRampSweep ramp;
  for (ModeWidget* v : std::initializer_list<ModeWidget*>{&pulse, &step, &ramp}) v->setDefaults();
  pulse.setTriggerType(TriggerSingle);
  pulse.setPulsePeriod(0.25);
  pulse.setPulseWidth(1.5e-6);
  step.setTriggerType(TriggerSingle);
  step.setSweepType(StepSweepFreqAmplitude);
  step.setStartFreq(2.5e9);
  step.setStopFreq(1.25e9);
  step.setPoints(17);
  step.setStartAmpl(-3.5);
  step.setStopAmpl(-42.25);
  step.setDwellTime(0.125);
  ramp.setTriggerType(TriggerSingle);
  ramp.setSpan(3.5e6);
  ramp.setSweepTime(0.02);
  ramp.setSweepPeriod(0.75);
  {
    QSettings s(file("all.ini"), QSettings::IniFormat);
    for (ModeWidget* v : std::initializer_list<ModeWidget*>{&pulse, &step, &ramp})
      v->saveSettings(&s);
  }
  {
    QSettings s(file("all.ini"), QSettings::IniFormat);
    EXPECT_EQ(s.childGroups(), (QStringList{"Pulse", "RampSweep", "StepSweep"}));
    s.beginGroup("Pulse");
    EXPECT_EQ(s.childKeys(), (QStringList{"Period", "Trigger", "Width"}));
    s.endGroup();
    s.beginGroup("StepSweep");
    EXPECT_EQ(s.childKeys(), (QStringList{"DwellTime", "Points", "StartAmpl", "StartFreq",
                                          "StopAmpl", "StopFreq", "SweepType", "TriggerMode"}));
    s.endGroup();
    s.beginGroup("RampSweep");
    EXPECT_EQ(s.childKeys(), (QStringList{"Period", "Span", "SweepTime", "TriggerMode"}));
  }

  ModeViewPulse pulse2;
  ModeViewStepSweep step2;
  ModeViewRampSweep ramp2;
  QSignalSpy pulseSpy(&pulse2, &ModeWidget::updated);
  {
    QSettings s(file("all.ini"), QSettings::IniFormat);
    for (ModeWidget* v : std::initializer_list<ModeWidget*>{&pulse2, &step2, &ramp2}) {
      v->setDefaults();
      v->loadSettings(&s);
    }
  }
  EXPECT_GE(pulseSpy.count(), 1);
  EXPECT_EQ(pulse2.triggerType(), TriggerSingle);
  EXPECT_DOUBLE_EQ(pulse2.pulseWidth(), 1.5e-6);
  EXPECT_DOUBLE_EQ(pulse2.pulsePeriod(), 0.25);
  EXPECT_EQ(pulse2.dutyCycleText(), "0.001 %");
  const StepSweepSettings a = step.settings(), b = step2.settings();
  EXPECT_EQ(b.trigger, a.trigger);
  EXPECT_EQ(b.type, a.type);
  EXPECT_EQ(b.startFreqHz, a.startFreqHz);
  EXPECT_EQ(b.stopFreqHz, a.stopFreqHz);
  EXPECT_EQ(b.points, a.points);
  EXPECT_EQ(b.startLevelDbm, a.startLevelDbm);
  EXPECT_EQ(b.stopLevelDbm, a.stopLevelDbm);
  EXPECT_EQ(b.dwellSeconds, a.dwellSeconds);
  EXPECT_EQ(ramp2.triggerType(), TriggerSingle);
  EXPECT_DOUBLE_EQ(ramp2.span(), 3.5e6);
  EXPECT_DOUBLE_EQ(ramp2.sweepTime(), 0.02);
  EXPECT_DOUBLE_EQ(ramp2.sweepPeriod(), 0.75);
}

TEST_F(PresetGroups, LoadClampsAndCouplesAsTheSlots) {
  const QString path = file("odd.ini");
  // The width is read first and drags the period up; the stored period then lowers it again.
  write(path, "Pulse", {{"Trigger", 5}, {"Width", 0.5}, {"Period", 0.1}});
  write(path, "StepSweep",
        {{"StartFreq", 1.0},
         {"StopFreq", 1e10},
         {"Points", 0},
         {"StartAmpl", 99.0},
         {"DwellTime", 100.0},
         {"SweepType", 9}});
  write(path, "RampSweep", {{"Span", 0.0}, {"SweepTime", 0.5}, {"Period", 0.2}});
  ModeViewPulse pulse;
  ModeViewStepSweep step;
  ModeViewRampSweep ramp;
  QSettings s(path, QSettings::IniFormat);
  for (ModeWidget* v : std::initializer_list<ModeWidget*>{&pulse, &step, &ramp}) {
    v->setDefaults();
    v->loadSettings(&s);
  }
  EXPECT_EQ(pulse.triggerType(), TriggerContinuous);  // 5 has no item
  EXPECT_DOUBLE_EQ(pulse.pulseWidth(), 0.1);
  EXPECT_DOUBLE_EQ(pulse.pulsePeriod(), 0.1);
  EXPECT_EQ(pulse.dutyCycleText(), "100.000 %");

  EXPECT_EQ(step.startFreq(), 3e7);
  EXPECT_EQ(step.stopFreq(), 6e9);
  EXPECT_EQ(step.points(), 2);
  EXPECT_EQ(step.startAmpl(), 99.0);
  EXPECT_EQ(step.stopAmpl(), -20.0);  // absent: the control's value stays
  EXPECT_EQ(step.dwellTime(), 10.0);
  EXPECT_EQ(step.sweepType(), StepSweepFreq);

  EXPECT_DOUBLE_EQ(ramp.span(), 1.0);
  EXPECT_DOUBLE_EQ(ramp.sweepTime(), 0.5);
  EXPECT_DOUBLE_EQ(ramp.sweepPeriod(), 0.5);
}

}  // namespace
