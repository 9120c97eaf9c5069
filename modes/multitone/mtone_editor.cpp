// SPDX-License-Identifier: MIT
// Table editor of tones (frequency offset and phase a row), saved and loaded as CSV.
#include "modes/multitone/mtone_editor.h"

#include "modes/csv_table.h"
#include "shell/file_dialogs.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const char* const fileFilter = "CSV File (*.csv)";
const char* const cellStyle = "QLineEdit { border: 0px; }";

}  // namespace

MtoneEditor::MtoneEditor(QWidget* parent) : QDialog(parent), table(new QTableWidget(0, 2, this)) {
  setWindowTitle("Multitone Table");
  table->setHorizontalHeaderLabels({"Frequency Offset", "Phase (rad)"});
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);

  auto* buttons = new QHBoxLayout();
  const std::pair<const char*, void (MtoneEditor::*)()> actions[] = {
      {"Add Row", &MtoneEditor::addRow},   {"Remove Row", &MtoneEditor::removeRow},
      {"Clear", &MtoneEditor::clearTable}, {"Load", &MtoneEditor::loadTable},
      {"Save", &MtoneEditor::saveTable},   {"OK", &MtoneEditor::finalValidate}};
  for (const auto& [text, slot] : actions) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, slot);
    buttons->addWidget(button);
  }
  auto* column = new QVBoxLayout(this);
  column->addWidget(table);
  column->addLayout(buttons);
  addRow();
}

int MtoneEditor::rowCount() const { return table->rowCount(); }

FrequencyEdit* MtoneEditor::frequencyCell(int row) const {
  return qobject_cast<FrequencyEdit*>(table->cellWidget(row, 0));
}

DoubleEdit* MtoneEditor::phaseCell(int row) const {
  return qobject_cast<DoubleEdit*>(table->cellWidget(row, 1));
}

double MtoneEditor::frequency(int row) const {
  const FrequencyEdit* cell = frequencyCell(row);
  return cell ? cell->value() : 0.0;
}

double MtoneEditor::phase(int row) const {
  const DoubleEdit* cell = phaseCell(row);
  return cell ? cell->value() : 0.0;
}

void MtoneEditor::setRow(int row, double frequencyHz, double phaseRad) {
  if (FrequencyEdit* cell = frequencyCell(row)) cell->setValue(frequencyHz);
  if (DoubleEdit* cell = phaseCell(row)) cell->setValue(phaseRad);
}

void MtoneEditor::validateTable() {
  for (int row = 0; row < rowCount(); ++row) {
    FrequencyEdit* f = frequencyCell(row);
    DoubleEdit* p = phaseCell(row);
    // Only values outside the limits are written back: an edit in progress keeps its text.
    if (f && (f->value() < -maxFrequencyHz || f->value() > maxFrequencyHz))
      f->setValue(std::clamp(f->value(), -maxFrequencyHz, maxFrequencyHz));
    if (p && (p->value() < -maxPhaseRad || p->value() > maxPhaseRad))
      p->setValue(std::clamp(p->value(), -maxPhaseRad, maxPhaseRad));
  }
}

void MtoneEditor::addRow() {
  const int row = table->rowCount();
  table->insertRow(row);
  auto* frequencyEdit = new FrequencyEdit(0.0);
  frequencyEdit->setStyleSheet(cellStyle);
  frequencyEdit->setFocusPolicy(Qt::StrongFocus);
  auto* phaseEdit = new DoubleEdit();
  phaseEdit->setStyleSheet(cellStyle);
  connect(frequencyEdit, &FrequencyEdit::valueChanged, this, &MtoneEditor::validateTable);
  connect(phaseEdit, &DoubleEdit::editUpdated, this, &MtoneEditor::validateTable);
  table->setCellWidget(row, 0, frequencyEdit);
  table->setCellWidget(row, 1, phaseEdit);
}

void MtoneEditor::removeRow() {
  if (table->rowCount() > 1) table->removeRow(table->rowCount() - 1);
}

void MtoneEditor::clearTable() {
  table->setRowCount(0);
  addRow();
}

bool MtoneEditor::loadTableFile(const QString& path) {
  CsvTable csv;
  if (!csv.load(path)) return false;
  table->setRowCount(0);
  for (int row = 0; row < csv.rowCount(); ++row) {
    addRow();
    setRow(row, csv.number(row, 0, 0.0), csv.number(row, 1, 0.0));
  }
  validateTable();
  return true;
}

bool MtoneEditor::saveTableFile(const QString& path) const {
  CsvTable csv;
  for (int row = 0; row < rowCount(); ++row) {
    csv.setCell(row, 0, frequency(row));
    csv.setCell(row, 1, phase(row));
  }
  return csv.save(path);
}

void MtoneEditor::loadTable() {
  const QString path = openFileName("Load a Multitone Table", fileFilter, this);
  if (!path.isEmpty()) loadTableFile(path);
}

void MtoneEditor::saveTable() {
  const QString path = saveFileName("Save Multitone Table", fileFilter, this);
  if (!path.isEmpty()) saveTableFile(path);
}

void MtoneEditor::finalValidate() {
  validateTable();
  accept();
}
