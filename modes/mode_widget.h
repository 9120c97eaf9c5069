// SPDX-License-Identifier: MIT
// Base of the mode views: a form of controls that is also the store the generator reads.
#pragma once

#include <QString>
#include <QWidget>

class MyFormLayout;
class QCheckBox;
class QSettings;

class ModeWidget : public QWidget {
  Q_OBJECT

public:
  // With addSpacer the form sits on the left of a horizontal layout, pushed there by an
  // expanding spacer. Without it the form is left unparented: the view installs it in a
  // layout of its own.
  ModeWidget(const QString& name, int modeIndex, QWidget* parent = nullptr, bool addSpacer = true);
  ~ModeWidget() override;

  int modeIndex() const { return modeIndex_; }
  // The list label, also shown in the status bar while the mode plays.
  QString modeName() const { return modeName_; }
  // Checking it makes this the active mode; CentralWidget puts it in its exclusive group.
  QCheckBox* enabledCheck() const { return enabledCheck_; }

  // Every control to its default, through the paths of user input, emitting updated().
  virtual void setDefaults() = 0;
  // Writes the view's keys inside its own group.
  virtual void saveSettings(QSettings* settings) = 0;
  // Reads each key with the control's value as default, clamps, sets and emits updated().
  virtual void loadSettings(QSettings* settings) = 0;

signals:
  void updated();

protected:
  MyFormLayout* formLayout;

private:
  int modeIndex_;
  QString modeName_;
  QCheckBox* enabledCheck_;
};
