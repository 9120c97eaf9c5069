// SPDX-License-Identifier: MIT
// View of the step sweep: start and stop of frequency and level, points and dwell.
#pragma once

#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"
#include "modes/step_sweep/step_sweep_plan.h"

class DoubleEdit;
class FrequencyEdit;
class IntLineEdit;
class TimeEdit;

class ModeViewStepSweep : public ModeWidget {
  Q_OBJECT

public:
  explicit ModeViewStepSweep(QWidget* parent = nullptr);

  static constexpr double minFreq = 3e7;  // Hz
  static constexpr double maxFreq = 6e9;
  static constexpr int minPoints = 2;
  static constexpr int maxPoints = 10001;
  static constexpr double minDwell = 1e-6;  // s
  static constexpr double maxDwell = 10.0;

  void setDefaults() override;
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

  // Safe on the streaming thread; read once at the start of a run.
  StepSweepSettings settings() const;
  TriggerType triggerType() const { return static_cast<TriggerType>(triggerCombo->currentValue()); }
  StepSweepType sweepType() const {
    return static_cast<StepSweepType>(sweepTypeCombo->currentValue());
  }
  double startFreq() const;
  double stopFreq() const;
  int points() const;
  double startAmpl() const;
  double stopAmpl() const;
  double dwellTime() const;

public slots:
  // Select the item of the value (none: no change) and emit updated().
  void setTriggerType(TriggerType type);
  void setSweepType(StepSweepType sweepType);
  // Each clamps to its range (the levels have none), sets the control and emits updated().
  void setStartFreq(double newStartFreq);
  void setStopFreq(double newStopFreq);
  void setPoints(int points);
  void setStartAmpl(double newStartAmpl);
  void setStopAmpl(double newStopAmpl);
  void setDwellTime(double newDwellTime);
  void triggerIndexChanged(int index);
  void sweepTypeChanged(int index);

private:
  MyComboBox* triggerCombo;
  MyComboBox* sweepTypeCombo;
  FrequencyEdit* startFreqEdit;
  FrequencyEdit* stopFreqEdit;
  IntLineEdit* pointsEdit;
  DoubleEdit* startAmplEdit;
  DoubleEdit* stopAmplEdit;
  TimeEdit* dwellEdit;
};
