// SPDX-License-Identifier: MIT
// Line edit for a hexadecimal word such as an access address or a CRC seed.
#pragma once

#include <QLineEdit>

class HexEditor : public QLineEdit {
  Q_OBJECT

public:
  HexEditor(const QString& text, int maxLength, QWidget* parent = nullptr);

  // The value of the last 8 hex digits of the text; a non-hex character counts as 0.
  quint32 toInt() const;

  // Sets the text as given, past the validator: the validator guards typing only, so a
  // default may be longer than the field allows (a CRC seed "55555555" in six digits).
  void setText(const QString& text);
};
