// SPDX-License-Identifier: MIT
// Combo box of the instrument's forms, whose items carry an integer value as item data.
#include "widgets/my_combo_box.h"

MyComboBox::MyComboBox(QWidget* parent) : QComboBox(parent) {
  // Connected first, so the mirror is up to date before any slot of the form runs.
  connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int index) {
    current.store(index < 0 ? -1 : itemData(index).toInt(), std::memory_order_relaxed);
  });
}

bool MyComboBox::selectValue(int value) {
  const int index = findData(value);
  if (index < 0 || index == currentIndex()) return false;
  setCurrentIndex(index);
  return true;
}
