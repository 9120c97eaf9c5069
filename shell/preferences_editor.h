// SPDX-License-Identifier: MIT
// The "Edit Preferences" dialog: SCPI server settings, the library's power-saving mode and the
// device backend.
#pragma once

#include <QDialog>

class IntLineEdit;
class QCheckBox;
class QComboBox;
class QPushButton;

// Shows the global preferences; only "Accept" stores them. They reach the file at exit.
class PreferencesEditor : public QDialog {
  Q_OBJECT

public:
  explicit PreferencesEditor(QWidget* parent = nullptr);

  QCheckBox* scpiEnabledBox() const { return scpiEnabled; }
  IntLineEdit* scpiPortEdit() const { return scpiPort; }
  QCheckBox* powerSavingCpuModeBox() const { return powerSavingCpuMode; }
  QComboBox* deviceBackendBox() const { return deviceBackend; }
  QPushButton* acceptButton() const { return accept_; }

public slots:
  // Stores the controls in the preferences, hands the power-saving mode and the backend to the
  // library at once and closes the dialog.
  void userAccepted();

private:
  QCheckBox* scpiEnabled = nullptr;
  IntLineEdit* scpiPort = nullptr;
  QCheckBox* powerSavingCpuMode = nullptr;
  QComboBox* deviceBackend = nullptr;
  QPushButton* accept_ = nullptr;
};
