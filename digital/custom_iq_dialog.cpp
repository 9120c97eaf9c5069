// SPDX-License-Identifier: MIT
// Editor of the user's linear modulation: points, differential offsets, offset rail, files.
#include "digital/custom_iq_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/custom_iq_plot.h"
#include "digital/diff_encoding_dialog.h"
#include "digital/modulation_csv.h"
#include "shell/file_dialogs.h"
#include "widgets/my_combo_box.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

const char* const fileFilter = "CSV File (*.csv)";

constexpr int iColumn = 2;
constexpr int qColumn = 3;

QString formatValue(float value) { return QString::asprintf("%f", static_cast<double>(value)); }

// A typed value, limited to -1 .. 1; text that isn't a number (NaN included) leaves it.
void readTyped(const QString& text, float* value) {
  bool ok = false;
  const double typed = text.trimmed().toDouble(&ok);
  if (ok && !std::isnan(typed)) *value = static_cast<float>(std::clamp(typed, -1.0, 1.0));
}

}  // namespace

CustomIQDialog::CustomIQDialog(const ModulationMap& edited, QWidget* parent)
    : QDialog(parent),
      map(edited),
      plot(new CustomIQPlot(&map.states, this)),
      table(new BasicTableWidget(0, 4, this)),
      addButton(makeButton("Add Symbol", &CustomIQDialog::addRow)),
      removeButton(makeButton("Remove Symbol", &CustomIQDialog::removeRow)),
      differentialButton(
          makeButton("Differential Encoding", &CustomIQDialog::diffEncodingBtnPressed)),
      defineDifferentialButton(
          makeButton("Define Differential Encoding", &CustomIQDialog::defineDiffEncoding)),
      offsetQButton(makeButton("Offset Q", &CustomIQDialog::qOffsetBtnPressed)),
      defaultMapBox(new MyComboBox(this)),
      importButton(makeButton("Import Custom Mod", &CustomIQDialog::loadModulation)),
      exportButton(makeButton("Export Custom Mod", &CustomIQDialog::saveModulation)),
      clearButton(makeButton("Clear Table", &CustomIQDialog::clearTable)),
      acceptButton(makeButton("Accept", &CustomIQDialog::finalCheck)) {
  setWindowTitle("Custom I/Q Modulation Editor");
  table->setHorizontalHeaderLabels({"Symbol", "Data", "I", "Q"});
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  table->verticalHeader()->hide();  // the "Symbol" column counts the rows from 0
  connect(table, &QTableWidget::itemChanged, this, &CustomIQDialog::tableUpdated);
  differentialButton->setCheckable(true);
  offsetQButton->setCheckable(true);
  defaultMapBox->addItem("Load Default I/Q Map", -1);
  // The built-in maps as a starting point: the linear ones that have an item.
  for (int mod = DigitalModBPSK; mod <= DigitalMod2ASK; ++mod)
    if (const char* text = digitalModText(mod)) defaultMapBox->addItem(text, mod);
  connect(defaultMapBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &CustomIQDialog::loadDefaultMod);
  layOut();
  showMap();
}

QPushButton* CustomIQDialog::makeButton(const char* text, void (CustomIQDialog::*slot)()) {
  auto* button = new QPushButton(text, this);
  button->setAutoDefault(false);  // Return ends a cell's edit, not the dialog
  connect(button, &QPushButton::clicked, this, slot);
  return button;
}

void CustomIQDialog::layOut() {
  QWidget* const controls[] = {
      addButton,     removeButton,  differentialButton, defineDifferentialButton,
      offsetQButton, defaultMapBox, importButton,       exportButton,
      clearButton,   acceptButton};
  auto* buttons = new QGridLayout();
  for (int index = 0; index < static_cast<int>(std::size(controls)); ++index)
    buttons->addWidget(controls[index], index / 2, index % 2);
  auto* left = new QVBoxLayout();
  left->addWidget(table);
  left->addLayout(buttons);
  auto* layout = new QHBoxLayout(this);
  // The plot wider than high, so that the scale labels fit left of its square.
  layout->addLayout(left, 2);
  layout->addWidget(plot, 3);
  resize(1040, 560);
}

void CustomIQDialog::addRow() {
  map.states.emplace_back(0.0f, 0.0f);
  refresh();
}

void CustomIQDialog::removeRow() {
  if (!map.states.empty()) map.states.pop_back();
  refresh();
}

void CustomIQDialog::diffEncodingBtnPressed() {
  map.differential = differentialButton->isChecked();
}

void CustomIQDialog::defineDiffEncoding() {
  DiffEncodingDialog dialog(map.diffStates, this);
  if (dialog.exec() == QDialog::Accepted) map.diffStates = dialog.offsets();
}

void CustomIQDialog::qOffsetBtnPressed() { map.offsetQ = offsetQButton->isChecked(); }

void CustomIQDialog::loadDefaultMod() {
  const int mod = defaultMapBox->currentData().toInt();
  if (mod == -1) return;
  map = defaultModulationMap(mod);
  showMap();
  defaultMapBox->setCurrentIndex(0);  // calls back here with -1
}

void CustomIQDialog::loadModulation() {
  const QString path = openFileName("Load Modulation", fileFilter, this);
  if (!path.isEmpty()) loadModulationFile(path);
}

void CustomIQDialog::saveModulation() {
  const QString path = saveFileName("Save Modulation", fileFilter, this);
  if (!path.isEmpty()) saveModulationFile(path);
}

bool CustomIQDialog::loadModulationFile(const QString& path) {
  if (!readModulationCsv(path, map)) return false;
  showMap();
  return true;
}

bool CustomIQDialog::saveModulationFile(const QString& path) const {
  return writeModulationCsv(path, map);
}

void CustomIQDialog::clearTable() {
  map = defaultModulationMap(DigitalModQPSK);
  showMap();
}

void CustomIQDialog::tableUpdated(QTableWidgetItem*) {
  const int rows = std::min(table->rowCount(), static_cast<int>(map.states.size()));
  for (int row = 0; row < rows; ++row) {
    Sample& point = map.states[static_cast<size_t>(row)];
    float values[2] = {point.real(), point.imag()};
    for (int part = 0; part < 2; ++part) {
      const QString text = table->item(row, iColumn + part)->text();
      // Only typed cells are read: a loaded point keeps its precision and may lie beyond 1.
      if (text != formatValue(values[part])) readTyped(text, &values[part]);
    }
    point = Sample(values[0], values[1]);
  }
  refresh();
}

void CustomIQDialog::finalCheck() {
  if (symbol_table::checkStateCount(this, map.states.size())) accept();
}

void CustomIQDialog::showMap() {
  differentialButton->setChecked(map.differential);
  offsetQButton->setChecked(map.offsetQ);
  refresh();
}

void CustomIQDialog::refresh() {
  const int rows = static_cast<int>(map.states.size());
  symbol_table::setSymbolRows(table, rows);
  {
    const QSignalBlocker blocker(table);
    for (int row = 0; row < rows; ++row) {
      const Sample point = map.states[static_cast<size_t>(row)];
      table->item(row, iColumn)->setText(formatValue(point.real()));
      table->item(row, qColumn)->setText(formatValue(point.imag()));
    }
  }
  plot->update();
}
