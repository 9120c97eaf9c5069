// SPDX-License-Identifier: MIT
// The "About" dialog: software and library versions and the outcome of the version check.
#pragma once

#include <QDialog>

class QLabel;
class QVBoxLayout;
class VersionChecker;

class AboutDialog : public QDialog {
  Q_OBJECT

public:
  // May wait for the version check to end: see VersionChecker::isNewVersionAvailable.
  explicit AboutDialog(VersionChecker& checker, QWidget* parent = nullptr);

  QLabel* softwareVersionLabel() const { return softwareVersionText; }
  QLabel* apiVersionLabel() const { return apiVersionText; }
  QLabel* statusLabel() const { return status; }
  // The link to the download page; null unless the software is out of date.
  QLabel* downloadLabel() const { return download; }

private:
  void addStatus(VersionChecker& checker, QVBoxLayout* layout);

  QLabel* softwareVersionText = nullptr;
  QLabel* apiVersionText = nullptr;
  QLabel* status = nullptr;
  QLabel* download = nullptr;
};
