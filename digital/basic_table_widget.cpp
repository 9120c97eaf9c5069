// SPDX-License-Identifier: MIT
// Table of text cells that grows with its items in place, for the editor dialogs.
#include "digital/basic_table_widget.h"

#include <QSignalBlocker>

#include <algorithm>

void BasicTableWidget::setRowCount(int rows) {
  const QSignalBlocker blocker(this);
  const int oldRows = rowCount();
  QTableWidget::setRowCount(std::max(rows, 0));
  for (int row = oldRows; row < rowCount(); ++row) {
    for (int column = 0; column < columnCount(); ++column) {
      if (item(row, column)) continue;
      auto* cell = new QTableWidgetItem();
      cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
      setItem(row, column, cell);
    }
  }
}
