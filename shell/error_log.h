// SPDX-License-Identifier: MIT
// The "Error Info" window: shows the error queue and clears it.
#pragma once

#include <QDialog>

class QPlainTextEdit;

class ErrorLog : public QDialog {
  Q_OBJECT
public:
  explicit ErrorLog(QWidget* parent = nullptr);
  QString text() const;

public slots:
  void clearList();
  void updateList();

private:
  QPlainTextEdit* textView;
};
