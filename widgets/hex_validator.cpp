// SPDX-License-Identifier: MIT
// Validator for hexadecimal text of bounded length, shown in upper case.
#include "widgets/hex_validator.h"

namespace {

bool isHexDigit(QChar c) {
  const QChar lower = c.toLower();
  return (lower >= QLatin1Char('0') && lower <= QLatin1Char('9')) ||
         (lower >= QLatin1Char('a') && lower <= QLatin1Char('f'));
}

}  // namespace

HexValidator::HexValidator(int maxLength, QObject* parent)
    : QValidator(parent), maxLength_(maxLength) {}

QValidator::State HexValidator::validate(QString& input, int& pos) const {
  if (input.length() > maxLength_) input.truncate(maxLength_);
  for (const QChar c : input) {
    if (!isHexDigit(c)) return Invalid;
  }
  input = input.toUpper();
  pos = qMin(pos, input.length());  // the cut may have removed the cursor's place
  return Acceptable;
}
