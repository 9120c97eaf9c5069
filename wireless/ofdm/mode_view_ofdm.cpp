// SPDX-License-Identifier: MIT
// The custom OFDM view: grid numerology, the resource table, default and saved configurations,
// and the export of the waveform to "ofdm_waveform.csv".
#include "wireless/ofdm/mode_view_ofdm.h"

#include "shell/file_dialogs.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/unit_format.h"
#include "wireless/ofdm/ofdm_config_file.h"
#include "wireless/ofdm/ofdm_generator.h"
#include "wireless/ofdm/ofdm_symbol_editor_dialog.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <algorithm>

namespace {

const int fftSizes[] = {16, 32, 64, 128, 256, 512, 1024, 2048, 4096};
const char* const configFilter = "Config Files (*.ini)";

}  // namespace

ModeViewOFDM::ModeViewOFDM(QWidget* parent)
    : ModeWidget("OFDM", modeIndexOFDM, parent),
      fftCombo(new MyComboBox(this)),
      spacingEdit(new FrequencyEdit(0.0, this)),
      bandwidthLabel(new QLabel(this)),
      guardLeftEdit(new IntLineEdit(this)),
      guardRightEdit(new IntLineEdit(this)),
      symbolCountEdit(new IntLineEdit(this)),
      guardIntervalEdit(new DoubleEdit(0.0, maxGuardInterval, 4, 0.0, this)),
      nullDcCheck(new QCheckBox(this)),
      resourcesLabel(new QLabel(this)),
      defaultCombo(new MyComboBox(this)) {
  enabledCheck()->hide();  // nothing selects this view as the playing mode
  for (int size : fftSizes) fftCombo->addItem(QString::number(size), size);
  guardLeftEdit->setRange(0, maxGuardCarriers);
  guardRightEdit->setRange(0, maxGuardCarriers);
  symbolCountEdit->setRange(1, maxSymbolCount);
  defaultCombo->addItem("Data Only", 0);
  defaultCombo->addItem("802.11a Style Frame", 1);
  defaultCombo->addItem("Custom", -1);
  addControls();
  connectControls();
  setConfiguration(defaultOfdmConfig(0));
}

void ModeViewOFDM::addControls() {
  formLayout->addRow("FFT Size", fftCombo);
  formLayout->addRow("Subcarrier Spacing", spacingEdit);
  formLayout->addRow("Bandwidth", bandwidthLabel);
  formLayout->addRow("Left Guard Carriers", guardLeftEdit);
  formLayout->addRow("Right Guard Carriers", guardRightEdit);
  formLayout->addRow("Symbol Count", symbolCountEdit);
  formLayout->addRow("Guard Interval (fraction)", guardIntervalEdit);
  formLayout->addRow("Null DC", nullDcCheck);
  auto* tableButton = new QPushButton("Edit Symbol Table", this);
  formLayout->addRow("Resources", resourcesLabel);
  formLayout->addRow(new QLabel(this), tableButton);
  auto* defaultButton = new QPushButton("Load Default", this);
  formLayout->addRow("Default Configuration", defaultCombo);
  formLayout->addRow(new QLabel(this), defaultButton);
  auto* saveConfigButton = new QPushButton("Save Configuration", this);
  auto* loadConfigButton = new QPushButton("Load Configuration", this);
  auto* waveformButton = new QPushButton("Save Waveform", this);
  formLayout->addRow(new QLabel(this), saveConfigButton);
  formLayout->addRow(new QLabel(this), loadConfigButton);
  formLayout->addRow(new QLabel(this), waveformButton);
  connect(tableButton, &QPushButton::clicked, this, &ModeViewOFDM::editSymbolTable);
  connect(defaultButton, &QPushButton::clicked, this, &ModeViewOFDM::loadDefaultConfig);
  connect(saveConfigButton, &QPushButton::clicked, this, &ModeViewOFDM::saveCustomConfig);
  connect(loadConfigButton, &QPushButton::clicked, this, &ModeViewOFDM::loadCustomConfig);
  connect(waveformButton, &QPushButton::clicked, this, &ModeViewOFDM::saveWaveformPressed);
}

void ModeViewOFDM::connectControls() {
  connect(fftCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &ModeViewOFDM::fftSizeChanged);
  connect(spacingEdit, &FrequencyEdit::valueChanged, this, &ModeViewOFDM::carrierSpacingChanged);
  connect(guardLeftEdit, &IntLineEdit::valueChanged, this,
          &ModeViewOFDM::guardBandCarriersChanged);
  connect(guardRightEdit, &IntLineEdit::valueChanged, this,
          &ModeViewOFDM::guardBandCarriersChanged);
  connect(symbolCountEdit, &IntLineEdit::valueChanged, this, &ModeViewOFDM::symbolCountChanged);
  connect(guardIntervalEdit, &DoubleEdit::editUpdated, this, &ModeViewOFDM::guardIntervalChanged);
  connect(nullDcCheck, &QCheckBox::toggled, this, [this](bool on) {
    if (filling) return;
    config.nullDc = on;
    emit updated();
  });
}

OFDMConfig ModeViewOFDM::configuration() const {
  OFDMConfig gathered = config;
  gathered.fftSize = fftCombo->currentValue();
  gathered.carrierSpacing = spacingEdit->value();
  gathered.guardCarriersLeft = guardLeftEdit->value();
  gathered.guardCarriersRight = guardRightEdit->value();
  gathered.symbolCount = symbolCountEdit->value();
  gathered.nullDc = nullDcCheck->isChecked();
  gathered.guardInterval = guardIntervalEdit->value();
  return gathered;
}

void ModeViewOFDM::setConfiguration(const OFDMConfig& newConfig) {
  config = newConfig;
  refreshControls();
}

double ModeViewOFDM::sampleRate() const { return config.fftSize * config.carrierSpacing; }

std::vector<Sample> ModeViewOFDM::generateWaveform() const { return generateOfdm(configuration()); }

// A size from a file that the combo doesn't offer is added, so the combo still shows the store.
void ModeViewOFDM::refreshControls() {
  // Not by blocking signals: the combo mirrors its value for other threads on its own signal.
  filling = true;
  if (fftCombo->findData(config.fftSize) < 0)
    fftCombo->addItem(QString::number(config.fftSize), config.fftSize);
  fftCombo->selectValue(config.fftSize);
  spacingEdit->setValue(config.carrierSpacing);
  guardLeftEdit->setValue(config.guardCarriersLeft);
  guardRightEdit->setValue(config.guardCarriersRight);
  symbolCountEdit->setValue(config.symbolCount);
  guardIntervalEdit->setValue(config.guardInterval);
  nullDcCheck->setChecked(config.nullDc);
  resourcesLabel->setText(QString::asprintf("%d", int(config.resources.size())));
  filling = false;
  refreshBandwidth();
}

void ModeViewOFDM::refreshBandwidth() { bandwidthLabel->setText(formatFrequency(sampleRate())); }

void ModeViewOFDM::fftSizeChanged() {
  if (filling) return;
  config.fftSize = fftCombo->currentValue();
  refreshBandwidth();
  emit updated();
}

void ModeViewOFDM::carrierSpacingChanged(double) {
  config.carrierSpacing = spacingEdit->value();
  refreshBandwidth();
  emit updated();
}

void ModeViewOFDM::symbolCountChanged(int count) {
  config.symbolCount = count;
  emit updated();
}

void ModeViewOFDM::guardBandCarriersChanged(int) {
  config.guardCarriersLeft = guardLeftEdit->value();
  config.guardCarriersRight = guardRightEdit->value();
  emit updated();
}

void ModeViewOFDM::guardIntervalChanged(double fraction) {
  config.guardInterval = std::clamp(fraction, 0.0, maxGuardInterval);
  guardIntervalEdit->setValue(config.guardInterval);
  emit updated();
}

int ModeViewOFDM::runDialog(QDialog& dialog) { return dialog.exec(); }

void ModeViewOFDM::editSymbolTable() {
  OFDMSymbolEditorDialog dialog(config.resources, this);
  runDialog(dialog);
  resourcesLabel->setText(QString::asprintf("%d", int(config.resources.size())));
  emit updated();
}

void ModeViewOFDM::loadDefaultConfig() {
  bool known = false;
  const OFDMConfig chosen = defaultOfdmConfig(defaultCombo->currentValue(), &known);
  if (!known) return;
  setConfiguration(chosen);
  defaultCombo->selectValue(-1);
  emit updated();
}

// Silent by design: a file that can't be written leaves no trace and no message.
void ModeViewOFDM::saveWaveformPressed() {
  writeOfdmCsv(ofdmWaveformFileName, generateWaveform());
}

void ModeViewOFDM::saveCustomConfig() {
  const QString name = saveFileName("Save OFDM Configuration Settings", configFilter, this);
  if (!name.isEmpty()) saveConfigFile(name);
}

void ModeViewOFDM::loadCustomConfig() {
  const QString name = openFileName("Load OFDM Configuration Settings", configFilter, this);
  if (!name.isEmpty() && loadConfigFile(name)) emit updated();
}

bool ModeViewOFDM::saveConfigFile(const QString& path) {
  QSettings settings(path, QSettings::IniFormat);
  saveOfdmConfig(settings, configuration());
  settings.sync();
  return settings.status() == QSettings::NoError;
}

bool ModeViewOFDM::loadConfigFile(const QString& path) {
  QSettings settings(path, QSettings::IniFormat);
  OFDMConfig loaded = configuration();
  if (!loadOfdmConfig(settings, loaded)) return false;
  setConfiguration(loaded);
  return true;
}

void ModeViewOFDM::setDefaults() {
  setConfiguration(defaultOfdmConfig(0));
  emit updated();
}

void ModeViewOFDM::saveSettings(QSettings* settings) { saveOfdmConfig(*settings, configuration()); }

void ModeViewOFDM::loadSettings(QSettings* settings) {
  OFDMConfig loaded = configuration();
  if (!loadOfdmConfig(*settings, loaded)) return;
  setConfiguration(loaded);
  emit updated();
}
