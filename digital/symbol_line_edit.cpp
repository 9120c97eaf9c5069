// SPDX-License-Identifier: MIT
// Read-only field of a bit pattern that shows its length and opens the symbol editor on a press.
#include "digital/symbol_line_edit.h"

#include "digital/symbol_editor_dialog.h"

SymbolLineEdit::SymbolLineEdit(QWidget* parent) : QLineEdit(parent) {
  setReadOnly(true);
  setAlignment(Qt::AlignRight);
  setPattern("0");
}

void SymbolLineEdit::setPattern(const QString& pattern) {
  pattern_ = pattern;
  setText(QString::asprintf("%d bits", pattern_.length()));
}

void SymbolLineEdit::mousePressEvent(QMouseEvent* event) {
  SymbolEditorDialog dialog(this);
  dialog.setText(pattern_);
  runEditor(dialog);
  const QString edited = dialog.text();
  setPattern(edited.isEmpty() ? QString("0") : edited);
  emit dataUpdated();
}

void SymbolLineEdit::runEditor(SymbolEditorDialog& dialog) { dialog.exec(); }
