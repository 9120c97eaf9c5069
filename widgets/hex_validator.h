// SPDX-License-Identifier: MIT
// Validator for hexadecimal text of bounded length, shown in upper case.
#pragma once

#include <QValidator>

class HexValidator : public QValidator {
  Q_OBJECT

public:
  explicit HexValidator(int maxLength, QObject* parent = nullptr);

  int maxLength() const { return maxLength_; }

  // Cuts the text to maxLength, refuses any non-hex character, upper-cases the rest.
  // There is no Intermediate state.
  State validate(QString& input, int& pos) const override;

private:
  int maxLength_;
};
