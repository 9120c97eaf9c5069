// SPDX-License-Identifier: MIT
// Read-only field of a bit pattern that shows its length and opens the symbol editor on a press.
#pragma once

#include <QLineEdit>
#include <QString>

class SymbolEditorDialog;

// Holds the pattern as text of "0" and "1" and shows "<length> bits". A mouse press opens a
// SymbolEditorDialog on the pattern; when it closes, accepted or not, its text becomes the
// pattern ("0" when empty) and dataUpdated() is emitted.
class SymbolLineEdit : public QLineEdit {
  Q_OBJECT

public:
  explicit SymbolLineEdit(QWidget* parent = nullptr);

  const QString& pattern() const { return pattern_; }
  // Stores the pattern as given and shows its length; no signal.
  void setPattern(const QString& pattern);

signals:
  void dataUpdated();

protected:
  void mousePressEvent(QMouseEvent* event) override;
  // Runs the editor until it closes; modal by default, replaced by tests.
  virtual void runEditor(SymbolEditorDialog& dialog);

private:
  QString pattern_;
};
