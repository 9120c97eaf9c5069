// SPDX-License-Identifier: MIT
// Combo box of the instrument's forms; a class of its own so the style sheet can address it.
#pragma once

#include <QComboBox>

class MyComboBox : public QComboBox {
  Q_OBJECT

public:
  explicit MyComboBox(QWidget* parent = nullptr);
};
