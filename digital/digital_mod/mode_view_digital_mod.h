// SPDX-License-Identifier: MIT
// The digital modulation view (mode 8): symbol rate, constellation, pulse shaping, bit source.
#pragma once

#include "digital/fsk_builder.h"
#include "digital/linear_mod_builder.h"
#include "digital/modulation_map.h"
#include "digital/pulse_shaping.h"
#include "modes/mode_types.h"
#include "modes/mode_widget.h"

#include <QString>

#include <mutex>
#include <vector>

class DoubleEdit;
class FrequencyEdit;
class IntLineEdit;
class MyComboBox;
class QDialog;
class TimeEdit;

// The controls are the store; the custom map, taps and bit string sit beside them under a
// lock, since a dialog may replace them while a generator still copies them. Every slot but the
// three define slots clamps, writes the control and emits updated().
class ModeViewDigitalMod : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minSampleRate = 16000.0;  // symbol rate × oversample, samples a second
  static constexpr double maxSampleRate = 5e7;
  static constexpr double maxOffDuration = 1.0;  // s
  static constexpr double minAlpha = 0.01;
  static constexpr double maxAlpha = 0.99;
  static constexpr int minFilterLength = 4;  // symbols
  static constexpr int maxFilterLength = 32;
  static constexpr double minDeviation = 1.0;  // Hz
  static constexpr double maxDeviation = 1e7;
  static constexpr double minIQScaling = 0.1;
  static constexpr double maxIQScaling = 1.0;
  // What a preset can make the custom tables claim; beyond, only this many are read.
  static constexpr int maxPresetStates = 1 << 16;
  static constexpr int maxPresetTaps = 16384;

  explicit ModeViewDigitalMod(QWidget* parent = nullptr);

  // All safe on the streaming thread.
  int triggerMode() const;
  double offDuration() const;  // s
  double symbolRate() const;   // Hz
  int modulationType() const;
  int filterType() const;
  double filterAlpha() const;
  int filterLength() const;  // symbols
  int sequence() const;      // PN order, or -1 for the custom pattern
  int sequenceSeed() const;
  double fskDeviation() const;  // Hz
  double iqScaling() const;
  int oversample() const;

  ModulationMap customModulation() const;
  std::vector<float> customFilterTaps() const;
  QString customBitString() const;
  // The custom map for 19, else the built-in one; empty for FSK.
  ModulationMap modulationMap() const;
  std::vector<float> pulseShapingTaps() const;
  // What the generators build from, bits included.
  LinearModSettings linearSettings() const;
  FskSettings fskSettings() const;

  void setCustomModulation(const ModulationMap& map);
  void setCustomFilterTaps(const std::vector<float>& taps);
  void setCustomBitString(const QString& bits);

  void setDefaults() override;
  // Group "RadioCustom", with the sub-group "CustomMod", the array "CustomFilter" and
  // "CustomBitString".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setTriggerMode(int newTriggerMode);
  void setOffDuration(double newOffDuration);
  // Kept so that symbol rate × oversample stays within 16000 to 5e7 samples a second.
  void setSymbolRate(double newSymbolRate);
  void setFilterAlpha(double newAlpha);
  void setFilterLength(int filterLength);
  void setModulationType(DigitalMod newModType);
  void setFilterType(FilterType newFilterType);
  // Selects the bit source: a PN order or -1.
  void setData(int pn);
  // A negative seed is taken by its magnitude.
  void setSequenceSeed(int newSeed);
  void setFskDeviation(double newDeviation);
  void setIQScaling(double scaling);
  // 2, 4 or 8; anything else becomes 4. The symbol rate is then kept within its range again.
  void setOversample(int oversample);
  void defineCustomModulation();
  void defineCustomFilter();
  void defineCustomSequence();

protected:
  // Runs a define slot's dialog; tests answer it without a modal loop.
  virtual int runDialog(QDialog& dialog);

private:
  void addControls();
  void connectControls();
  void loadCustomModulation(QSettings* settings);
  void loadCustomFilter(QSettings* settings);
  void saveCustomModulation(QSettings* settings) const;

  MyComboBox* triggerCombo;
  TimeEdit* offDurationEdit;
  FrequencyEdit* symbolRateEdit;
  MyComboBox* modulationCombo;
  MyComboBox* filterCombo;
  DoubleEdit* alphaEdit;
  IntLineEdit* filterLengthEdit;
  MyComboBox* sequenceCombo;
  IntLineEdit* seedEdit;
  FrequencyEdit* deviationEdit;
  DoubleEdit* iqScalingEdit;
  IntLineEdit* oversampleEdit;

  mutable std::mutex customLock;
  ModulationMap customModulation_;
  std::vector<float> customFilterTaps_;
  QString customBitString_;
};
