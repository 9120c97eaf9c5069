// SPDX-License-Identifier: MIT
// Combo box of the instrument's forms, whose items carry an integer value as item data.
#pragma once

#include <QComboBox>

#include <atomic>

// A class of its own so the style sheet can address it. It also mirrors the current item's
// value in an atomic, because generators read it from the streaming thread.
class MyComboBox : public QComboBox {
  Q_OBJECT

public:
  explicit MyComboBox(QWidget* parent = nullptr);

  // Item data of the current item; -1 while there is none. Safe on any thread.
  int currentValue() const { return current.load(std::memory_order_relaxed); }
  // Selects the item whose data is `value`; without one nothing changes. True when the
  // selection moved, and with it currentIndexChanged was emitted.
  bool selectValue(int value);

private:
  std::atomic<int> current{-1};
};
