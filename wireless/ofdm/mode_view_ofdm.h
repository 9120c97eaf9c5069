// SPDX-License-Identifier: MIT
// The custom OFDM view: grid numerology, the resource table, default and saved configurations,
// and the export of the waveform to "ofdm_waveform.csv".
#pragma once

#include "modes/mode_widget.h"
#include "wireless/ofdm/ofdm_config.h"

#include <QString>

#include <vector>

class DoubleEdit;
class FrequencyEdit;
class IntLineEdit;
class MyComboBox;
class QCheckBox;
class QDialog;
class QLabel;

// Not in the mode list and without a generator of its own: the main window shows it in its
// OFDM builder, which plays the waveform through the arb mode. The resources live in `config`;
// the controls hold the rest and their slots copy it there.
class ModeViewOFDM : public ModeWidget {
  Q_OBJECT

public:
  // Listed nowhere; the index is one the dispatch runs nothing for.
  static constexpr int modeIndexOFDM = 9;
  static constexpr int maxSymbolCount = 10000;
  static constexpr int maxGuardCarriers = 4096;
  static constexpr double maxGuardInterval = 0.5;

  explicit ModeViewOFDM(QWidget* parent = nullptr);

  // The controls gathered into a configuration with the resources.
  OFDMConfig configuration() const;
  // Replaces the configuration and refreshes the controls; no signal.
  void setConfiguration(const OFDMConfig& newConfig);
  // fftSize x carrierSpacing: the rate the samples are meant to play at.
  double sampleRate() const;
  std::vector<Sample> generateWaveform() const;

  // What the file slots do once a name is chosen. Loading refreshes the controls; a file of
  // another version changes nothing and gives false.
  bool saveConfigFile(const QString& path);
  bool loadConfigFile(const QString& path);

  // Configuration 0, as a new view has it.
  void setDefaults() override;
  // The configuration's own "OFDM" group.
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void fftSizeChanged();
  void carrierSpacingChanged(double);
  void symbolCountChanged(int);
  void guardBandCarriersChanged(int);
  void guardIntervalChanged(double);
  void editSymbolTable();
  void loadDefaultConfig();
  void saveWaveformPressed();
  void saveCustomConfig();
  void loadCustomConfig();

protected:
  // Runs the symbol editor; tests answer it without a modal loop.
  virtual int runDialog(QDialog& dialog);

private:
  void addControls();
  void connectControls();
  void refreshControls();
  void refreshBandwidth();

  OFDMConfig config;
  bool filling = false;  // the controls are being set from `config`

  MyComboBox* fftCombo;
  FrequencyEdit* spacingEdit;
  QLabel* bandwidthLabel;
  IntLineEdit* guardLeftEdit;
  IntLineEdit* guardRightEdit;
  IntLineEdit* symbolCountEdit;
  DoubleEdit* guardIntervalEdit;
  QCheckBox* nullDcCheck;
  QLabel* resourcesLabel;
  MyComboBox* defaultCombo;
};
