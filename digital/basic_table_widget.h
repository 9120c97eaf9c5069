// SPDX-License-Identifier: MIT
// Table of text cells that grows with its items in place, for the editor dialogs.
#pragma once

#include <QTableWidget>

class BasicTableWidget : public QTableWidget {
  Q_OBJECT

public:
  using QTableWidget::QTableWidget;

  // Sets the row count with the table's signals blocked, and gives every cell of each new row
  // an item aligned right (and vertically centred), so that callers can write item(row, column)
  // at once. Hides QTableWidget::setRowCount: call it through a BasicTableWidget.
  void setRowCount(int rows);
};
