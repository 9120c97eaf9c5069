// SPDX-License-Identifier: MIT
// The "Edit Preferences" dialog: SCPI server settings, the library's power-saving mode and the
// device backend.
#include "shell/preferences_editor.h"

#include "krt/krt_api.h"
#include "krt/krt_ext.h"
#include "persist/preferences.h"
#include "widgets/int_line_edit.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace {

const char* const kScpiNote = "*SCPI settings require a software restart to take effect.";
const char* const kPowerSavingNote =
    "*New power efficient CPUs interfere with high throughput USB\n"
    "applications. To migitage this, enable Power Saving CPU Mode.\n"
    "CPU usage increases when this mode is enabled.\n"
    "Read more about this in the KRT40 Software Manual.\n";
const char* const kBackendNote =
    "*The device backend applies to the next connect. SoapySDR lists the\n"
    "transmitters of the SoapySDR modules installed (see the README).";
const char* const kBackendAbsentNote = "*This build has no SoapySDR backend.";

}  // namespace

PreferencesEditor::PreferencesEditor(QWidget* parent) : QDialog(parent) {
  setWindowTitle("Edit Preferences");
  auto* form = new QFormLayout(this);
  form->setSizeConstraint(QLayout::SetFixedSize);
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);

  scpiEnabled = new QCheckBox;
  scpiEnabled->setChecked(preferences.scpiEnabled);
  form->addRow("SCPI Enabled", scpiEnabled);
  // No range check: the port is taken as entered.
  scpiPort = new IntLineEdit;
  scpiPort->setValue(preferences.scpiPort);
  form->addRow("SCPI Port", scpiPort);
  form->addRow("", new QLabel(kScpiNote));

  powerSavingCpuMode = new QCheckBox;
  powerSavingCpuMode->setChecked(preferences.powerSavingCpuMode);
  form->addRow("Power Saving CPU Mode", powerSavingCpuMode);
  form->addRow("", new QLabel(kPowerSavingNote));

  deviceBackend = new QComboBox;
  deviceBackend->addItems({"Simulated", "SoapySDR"});
  deviceBackend->setCurrentText(preferences.deviceBackend);
  const bool soapyBuilt = krtBackendAvailable(KRT_BACKEND_SOAPYSDR) != 0;
  deviceBackend->setEnabled(soapyBuilt);
  form->addRow("Device Backend", deviceBackend);
  form->addRow("", new QLabel(soapyBuilt ? kBackendNote : kBackendAbsentNote));
  form->addRow("", new QLabel);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  accept_ = new QPushButton("Accept");
  buttons->addWidget(accept_);
  form->addRow(buttons);
  connect(accept_, &QPushButton::pressed, this, &PreferencesEditor::userAccepted);
}

void PreferencesEditor::userAccepted() {
  preferences.scpiEnabled = scpiEnabled->isChecked();
  preferences.scpiPort = scpiPort->value();
  preferences.powerSavingCpuMode = powerSavingCpuMode->isChecked();
  krtEnablePowerSavingCpuMode(preferences.powerSavingCpuMode ? 1 : 0);
  preferences.deviceBackend = deviceBackend->currentText();
  applyDeviceBackend();
  accept();
}
