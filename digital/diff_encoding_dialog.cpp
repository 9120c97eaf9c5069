// SPDX-License-Identifier: MIT
// Editor of the phase-state offsets of a differential custom modulation.
#include "digital/diff_encoding_dialog.h"

#include "digital/basic_table_widget.h"
#include "shell/message_box.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace symbol_table {

bool checkStateCount(QWidget* parent, size_t count) {
  if (count >= 2 && (count & (count - 1)) == 0) return true;
  showWarning(parent, "Invalid Number of States",
              "The number of symbol states should be a power of two.");
  return false;
}

QString symbolBits(int symbol, int rows) {
  int digits = 0;
  while ((1LL << digits) < rows) ++digits;
  QString bits(digits, '0');
  for (int bit = 0; bit < digits; ++bit)
    if ((symbol >> bit) & 1) bits[digits - 1 - bit] = '1';
  return bits;
}

void setSymbolRows(BasicTableWidget* table, int rows) {
  table->setRowCount(rows);
  const QSignalBlocker blocker(table);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < 2; ++column) {
      QTableWidgetItem* cell = table->item(row, column);
      cell->setFlags(cell->flags() & ~Qt::ItemIsEditable);  // they follow from the row
      cell->setText(column == 0 ? QString::number(row) : symbolBits(row, rows));
    }
  }
}

}  // namespace symbol_table

namespace {

QString formatOffset(int32_t offset) { return QString::asprintf("%d", offset); }

}  // namespace

DiffEncodingDialog::DiffEncodingDialog(const std::vector<int32_t>& offsets, QWidget* parent)
    : QDialog(parent), diffStates(offsets), table(new BasicTableWidget(0, 3, this)) {
  setWindowTitle("Differential Encoding");
  table->setHorizontalHeaderLabels({"Symbol", "Data", "Offset"});
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  table->verticalHeader()->hide();  // the "Symbol" column counts the rows from 0
  connect(table, &QTableWidget::itemChanged, this, &DiffEncodingDialog::tableUpdated);

  auto* buttons = new QHBoxLayout();
  const std::pair<const char*, void (DiffEncodingDialog::*)()> actions[] = {
      {"Add Row", &DiffEncodingDialog::addRow},
      {"Remove Row", &DiffEncodingDialog::removeRow},
      {"Accept", &DiffEncodingDialog::finalCheck}};
  for (const auto& [text, slot] : actions) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);  // Return ends a cell's edit, not the dialog
    connect(button, &QPushButton::clicked, this, slot);
    buttons->addWidget(button);
  }
  auto* column = new QVBoxLayout(this);
  column->addWidget(table);
  column->addLayout(buttons);
  resize(400, 450);
  refresh();
}

void DiffEncodingDialog::tableUpdated(QTableWidgetItem*) {
  const int rows = std::min(table->rowCount(), static_cast<int>(diffStates.size()));
  for (int row = 0; row < rows; ++row) {
    int32_t& offset = diffStates[static_cast<size_t>(row)];
    const QString text = table->item(row, 2)->text();
    // Only typed cells are read: the limit is for hand entry, not for a loaded map.
    if (text == formatOffset(offset)) continue;
    bool ok = false;
    const qlonglong typed = text.trimmed().toLongLong(&ok, 10);
    if (ok) offset = static_cast<int32_t>(std::clamp<qlonglong>(typed, -maxOffset, maxOffset));
  }
  refresh();
}

void DiffEncodingDialog::addRow() {
  diffStates.push_back(diffStates.empty() ? 0 : diffStates.back());
  refresh();
}

void DiffEncodingDialog::removeRow() {
  if (!diffStates.empty()) diffStates.pop_back();
  refresh();
}

void DiffEncodingDialog::finalCheck() {
  if (symbol_table::checkStateCount(this, diffStates.size())) accept();
}

void DiffEncodingDialog::refresh() {
  const int rows = static_cast<int>(diffStates.size());
  symbol_table::setSymbolRows(table, rows);
  const QSignalBlocker blocker(table);
  for (int row = 0; row < rows; ++row)
    table->item(row, 2)->setText(formatOffset(diffStates[static_cast<size_t>(row)]));
}
