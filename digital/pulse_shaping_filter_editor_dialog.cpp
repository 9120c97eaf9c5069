// SPDX-License-Identifier: MIT
// Editor of the real pulse-shaping taps of the digital mode, with built-in designs and files.
#include "digital/pulse_shaping_filter_editor_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/filter_designs.h"
#include "digital/filter_editor_support.h"
#include "modes/csv_table.h"
#include "widgets/am_plot.h"

#include <QLabel>
#include <QSignalBlocker>

#include <algorithm>

using namespace filter_editor;

PulseShapingFilterEditorDialog::PulseShapingFilterEditorDialog(const std::vector<float>& taps,
                                                               int os, QWidget* parent)
    : FilterEditorDialog({"Filter Tap"}, parent), filterTaps(taps), os(os), designTaps(os * 8 + 1) {
  connect(table, &QTableWidget::itemChanged, this, &PulseShapingFilterEditorDialog::tableUpdated);
  layOut({{"Add Row", [this] { addRow(); }},
          {"Remove Row", [this] { removeRow(); }},
          {QStringLiteral("Load RRC (\u03b1 = 0.35)"), [this] { loadRRC(); }},
          {"Load Gaussian (0.5)", [this] { loadGaussian(); }},
          {"Load Rectangular Window", [this] { loadRectFilter(); }},
          {"Load Half Sine", [this] { loadHalfSine(); }},
          {"Load Filter", [this] { loadFilter(); }},
          {"Save Filter", [this] { saveFilter(); }},
          {"Accept", [this] { finalCheck(); }}},
         new QLabel(QString::asprintf("Oversample = %d", os), this));
  refresh();
}

void PulseShapingFilterEditorDialog::tableUpdated(QTableWidgetItem*) {
  const int rows = std::min(table->rowCount(), static_cast<int>(filterTaps.size()));
  for (int row = 0; row < rows; ++row) {
    const QTableWidgetItem* cell = table->item(row, 0);
    if (!cell) continue;
    float& tap = filterTaps[static_cast<size_t>(row)];
    if (cell->text() != formatTap(tap)) readTap(cell->text(), &tap);
  }
  refresh();
}

void PulseShapingFilterEditorDialog::addRow() {
  filterTaps.push_back(0.0f);
  refresh();
}

void PulseShapingFilterEditorDialog::removeRow() {
  if (!filterTaps.empty()) filterTaps.pop_back();
  refresh();
}

template <class Design>
void PulseShapingFilterEditorDialog::loadDesign(Design design) {
  filterTaps.assign(static_cast<size_t>(std::max(designTaps, 0)), 0.0f);
  design(filterTaps.data(), static_cast<int>(filterTaps.size()));
  refresh();
}

void PulseShapingFilterEditorDialog::loadRRC() {
  loadDesign([this](float* h, int n) { designRootRaisedCosine(h, n, 0.35, os); });
}

void PulseShapingFilterEditorDialog::loadGaussian() {
  loadDesign([this](float* h, int n) { designGaussian(h, n, 0.5, os); });
}

void PulseShapingFilterEditorDialog::loadRectFilter() {
  loadDesign([this](float* h, int n) { designRectangular(h, n, 1.0 / os, os); });
}

void PulseShapingFilterEditorDialog::loadHalfSine() {
  loadDesign([this](float* h, int n) { designHalfSine(h, n, os); });
}

bool PulseShapingFilterEditorDialog::loadFilterFile(const QString& path) {
  CsvTable csv;
  if (!readFilterFile(path, &csv)) return false;
  std::vector<float> read;
  float tap = 0.0f;
  for (int row = 0; row < csv.rowCount() && readTap(csv.text(row, 0), &tap); ++row)
    read.push_back(tap);
  if (read.size() > static_cast<size_t>(maxFileTaps)) return false;
  filterTaps = std::move(read);
  refresh();
  return true;
}

bool PulseShapingFilterEditorDialog::saveFilterFile(const QString& path) const {
  CsvTable csv;
  for (size_t row = 0; row < filterTaps.size(); ++row)
    csv.setCell(static_cast<int>(row), 0, fileTap(filterTaps[row]));
  return csv.save(path);
}

void PulseShapingFilterEditorDialog::refresh() {
  table->setRowCount(static_cast<int>(filterTaps.size()));
  {
    const QSignalBlocker blocker(table);
    for (size_t row = 0; row < filterTaps.size(); ++row)
      table->item(static_cast<int>(row), 0)->setText(formatTap(filterTaps[row]));
  }
  updatePlots();
}

void PulseShapingFilterEditorDialog::updatePlots() {
  impulsePlot->clearSeries();
  spectrumPlot->clearSeries();
  if (!filterTaps.empty()) {
    const int n = static_cast<int>(filterTaps.size());
    PlotSeries* impulse = impulsePlot->addSeries();
    impulse->color = Qt::blue;
    impulse->points.resize(filterTaps.size());
    for (int k = 0; k < n; ++k) impulse->points[static_cast<size_t>(k)] = {k + 1, filterTaps[k]};
    const auto [low, high] = std::minmax_element(filterTaps.begin(), filterTaps.end());
    impulsePlot->setXRange(1, n);
    impulsePlot->setYRange(*low, *high);

    const std::vector<float> power = tapSpectrumDb(filterTaps.data(), n);
    PlotSeries* spectrum = spectrumPlot->addSeries();
    spectrum->color = Qt::blue;
    spectrum->points.resize(tapSpectrumSize / 2);
    for (int k = 0; k < tapSpectrumSize / 2; ++k)
      spectrum->points[static_cast<size_t>(k)] = {static_cast<double>(k) / tapSpectrumSize,
                                                  power[static_cast<size_t>(k)]};
    spectrumPlot->setXRange(0.0, 0.5);
    spectrumPlot->setYRange(-90.0, 10.0);
  }
  impulsePlot->update();
  spectrumPlot->update();
}
