// SPDX-License-Identifier: MIT
// Line edit of an integer range such as "-26:-22,1:6", white when it parses and red when not.
#include "wireless/ofdm/range_editor.h"

#include "wireless/ofdm/range_syntax.h"

void colourValidity(QLineEdit* edit, bool valid) {
  edit->setStyleSheet(valid ? "background-color: white;" : "background-color: red;");
}

RangeEditor::RangeEditor(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::editingFinished, this, &RangeEditor::editChanged);
  colourValidity(this, true);
}

void RangeEditor::setRange(const QString& text) {
  setText(text);
  setCursorPosition(0);  // a long range shows its start
  parse();
}

void RangeEditor::editChanged() {
  parse();
  emit rangeChanged();
}

void RangeEditor::parse() {
  valid_ = parseRange(text(), values_);
  colourValidity(this, valid_);
}
