// SPDX-License-Identifier: MIT
// Line edit for a hexadecimal word such as an access address or a CRC seed.
#include "widgets/hex_editor.h"

#include "widgets/hex_validator.h"

namespace {

quint32 nibbleOf(QChar c) {
  const ushort u = c.unicode();
  if (u >= '0' && u <= '9') return u - '0';
  if (u >= 'a' && u <= 'f') return u - 'a' + 10;
  if (u >= 'A' && u <= 'F') return u - 'A' + 10;
  return 0;
}

}  // namespace

HexEditor::HexEditor(const QString& text, int maxLength, QWidget* parent)
    : QLineEdit(text, parent) {
  setValidator(new HexValidator(maxLength, this));
}

quint32 HexEditor::toInt() const {
  const QString digits = text();
  const int count = qMin(8, digits.length());
  quint32 result = 0;
  for (int i = 0; i < count; ++i) {
    // Read from the end: the last character is the lowest nibble.
    result |= nibbleOf(digits.at(digits.length() - 1 - i)) << (4 * i);
  }
  return result;
}

void HexEditor::setText(const QString& text) {
  // QLineEdit runs the validator on programmatic text too, which would cut and upper-case it.
  const QValidator* hexValidator = validator();
  setValidator(nullptr);
  QLineEdit::setText(text);
  setValidator(hexValidator);
}
