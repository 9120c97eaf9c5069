// SPDX-License-Identifier: MIT
// Editor of the phase-state offsets of a differential custom modulation.
#pragma once

#include <QDialog>
#include <QString>

#include <cstdint>
#include <vector>

class BasicTableWidget;
class QTableWidgetItem;

// Window "Differential Encoding": a table of "Symbol", "Data" and "Offset" over the buttons
// "Add Row", "Remove Row" and "Accept". Modal, on a copy: the offsets reach the caller through
// offsets() after acceptance, which takes a power of two of at least 2 of them.
class DiffEncodingDialog : public QDialog {
  Q_OBJECT

public:
  explicit DiffEncodingDialog(const std::vector<int32_t>& offsets, QWidget* parent = nullptr);

  std::vector<int32_t> offsets() const { return diffStates; }

  // Hand entry is limited to this magnitude.
  static constexpr int maxOffset = 4096;

public slots:
  // Reads every "Offset" cell as a base-10 integer, limited to -4096 .. 4096; a cell that
  // can't be read keeps its old value.
  void tableUpdated(QTableWidgetItem* item);
  // Appends a copy of the last offset, or 0 to an empty list.
  void addRow();
  void removeRow();
  void finalCheck();

private:
  void refresh();

  std::vector<int32_t> diffStates;
  BasicTableWidget* table;
};

// What the two constellation editors share.
namespace symbol_table {

// True for a power of two of at least 2; otherwise warns "Invalid Number of States".
bool checkStateCount(QWidget* parent, size_t count);

// Gives `table` one row a symbol, with its number in column 0 and in column 1 its bits, most
// significant first, as many as the count rounded up to a power of two needs. Signals blocked.
void setSymbolRows(BasicTableWidget* table, int rows);

// "Data" of `symbol` in a table of `rows`: e.g. "10" for symbol 2 of 3 rows.
QString symbolBits(int symbol, int rows);

}  // namespace symbol_table
