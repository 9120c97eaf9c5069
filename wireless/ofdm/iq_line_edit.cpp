// SPDX-License-Identifier: MIT
// Line edit of a list of I/Q values typed as "I, Q, I, Q", coloured as a range edit is.
#include "wireless/ofdm/iq_line_edit.h"

#include "wireless/ofdm/range_editor.h"
#include "wireless/ofdm/range_syntax.h"

IQLineEdit::IQLineEdit(QWidget* parent) : QLineEdit(parent) {
  connect(this, &QLineEdit::editingFinished, this, &IQLineEdit::editChanged);
  colourValidity(this, true);
}

void IQLineEdit::setValues(const std::vector<Sample>& values) {
  values_ = values;
  valid_ = true;
  setText(iqListText(values));
  setCursorPosition(0);  // a long list shows its start
  colourValidity(this, true);
}

void IQLineEdit::editChanged() {
  valid_ = parseIqList(text(), values_);
  colourValidity(this, valid_);
  emit valuesChanged();
}
