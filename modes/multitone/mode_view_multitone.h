// SPDX-License-Identifier: MIT
// Multitone view: phase law, seed, tone count, spacing and notch of the comb.
#pragma once

#include "modes/mode_types.h"
#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"
#include "modes/multitone/multitone_builder.h"

class FrequencyEdit;
class IntLineEdit;

// Mode index 4. The slots clamp as the remote rows do; a preset load does not clamp, so the
// product rule (tone count x spacing <= 4e7 Hz) can be broken by a preset.
class ModeViewMultitone : public ModeWidget {
  Q_OBJECT

public:
  explicit ModeViewMultitone(QWidget* parent = nullptr);

  void setDefaults() override;
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

  // All safe to call from the streaming thread.
  MultiTonePhase phase() const { return static_cast<MultiTonePhase>(phaseCombo->currentValue()); }
  int phaseSeed() const;
  int toneCount() const;
  double freqSpacing() const;  // Hz
  double notchWidth() const;   // Hz
  // What the generator builds from.
  MultitoneSettings settings() const;

  static constexpr int maxToneCount = 4001;
  static constexpr double minSpacingHz = 0.001;
  static constexpr double maxSpacingHz = 2e7;
  static constexpr double maxSpanHz = 4e7;  // tone count x spacing, and the widest notch

public slots:
  void setPhase(MultiTonePhase newPhase);
  void setFreqSpacing(double newSpacing);
  void setToneCount(int newCount);
  void setPhaseSeed(int newSeed);
  void setNotchWidth(double newWidth);
  void setPhasePrivate(int index);

private:
  MyComboBox* phaseCombo;
  IntLineEdit* seedEdit;
  IntLineEdit* toneCountEdit;
  FrequencyEdit* spacingEdit;
  FrequencyEdit* notchEdit;
};
