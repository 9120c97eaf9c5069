// SPDX-License-Identifier: MIT
// The "Edit Preferences" dialog: SCPI server settings and the library's power-saving mode.
#pragma once

#include <QDialog>

class IntLineEdit;
class QCheckBox;
class QPushButton;

// Shows the global preferences; only "Accept" stores them. They reach the file at exit.
class PreferencesEditor : public QDialog {
  Q_OBJECT

public:
  explicit PreferencesEditor(QWidget* parent = nullptr);

  QCheckBox* scpiEnabledBox() const { return scpiEnabled; }
  IntLineEdit* scpiPortEdit() const { return scpiPort; }
  QCheckBox* powerSavingCpuModeBox() const { return powerSavingCpuMode; }
  QPushButton* acceptButton() const { return accept_; }

public slots:
  // Stores the controls in the preferences, hands the power-saving mode to the library at
  // once and closes the dialog.
  void userAccepted();

private:
  QCheckBox* scpiEnabled = nullptr;
  IntLineEdit* scpiPort = nullptr;
  QCheckBox* powerSavingCpuMode = nullptr;
  QPushButton* accept_ = nullptr;
};
