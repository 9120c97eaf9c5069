// SPDX-License-Identifier: MIT
// Editor of the complex taps of the impairments' channel filter.
#include "digital/channel_filter_editor_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/filter_designs.h"
#include "digital/filter_editor_support.h"
#include "modes/csv_table.h"
#include "widgets/am_plot.h"

#include <QSignalBlocker>

#include <algorithm>
#include <cmath>

using namespace filter_editor;

ChannelFilterEditorDialog::ChannelFilterEditorDialog(const std::vector<Sample>& taps,
                                                     QWidget* parent)
    : FilterEditorDialog({"Real", "Imag"}, parent), filterTaps(taps) {
  connect(table, &QTableWidget::itemChanged, this, &ChannelFilterEditorDialog::tableUpdated);
  layOut({{"Add Row", [this] { addRow(); }},
          {"Remove Row", [this] { removeRow(); }},
          {"Load Default", [this] { loadDefault(); }},
          {"Normalize", [this] { normalize(); }},
          {"Load Filter", [this] { loadFilter(); }},
          {"Save Filter", [this] { saveFilter(); }},
          {"Accept", [this] { finalCheck(); }}});
  refresh();
}

void ChannelFilterEditorDialog::tableUpdated(QTableWidgetItem*) {
  const int rows = std::min(table->rowCount(), static_cast<int>(filterTaps.size()));
  for (int row = 0; row < rows; ++row) {
    Sample& tap = filterTaps[static_cast<size_t>(row)];
    float parts[2] = {tap.real(), tap.imag()};
    for (int column = 0; column < 2; ++column) {
      const QTableWidgetItem* cell = table->item(row, column);
      if (cell && cell->text() != formatTap(parts[column])) readTap(cell->text(), &parts[column]);
    }
    tap = Sample(parts[0], parts[1]);
  }
  refresh();
}

void ChannelFilterEditorDialog::addRow() {
  filterTaps.push_back(Sample(0.0f, 0.0f));
  refresh();
}

void ChannelFilterEditorDialog::removeRow() {
  if (!filterTaps.empty()) filterTaps.pop_back();
  refresh();
}

void ChannelFilterEditorDialog::loadDefault() {
  filterTaps.assign(15, Sample(0.0f, 0.0f));
  filterTaps[7] = Sample(1.0f, 0.0f);
  refresh();
}

void ChannelFilterEditorDialog::normalize() {
  double energy = 0.0;
  for (const Sample& tap : filterTaps) energy += std::norm(std::complex<double>(tap));
  if (energy > 0.0 && std::isfinite(energy)) {
    const float scale = static_cast<float>(1.0 / std::sqrt(energy));
    for (Sample& tap : filterTaps) tap *= scale;
  }
  refresh();
}

bool ChannelFilterEditorDialog::loadFilterFile(const QString& path) {
  CsvTable csv;
  if (!readFilterFile(path, &csv)) return false;
  std::vector<Sample> read;
  float real = 0.0f;
  for (int row = 0; row < csv.rowCount() && readTap(csv.text(row, 0), &real); ++row) {
    float imag = 0.0f;
    readTap(csv.text(row, 1), &imag);
    read.push_back(Sample(real, imag));
  }
  if (read.size() > static_cast<size_t>(maxFileTaps)) return false;
  filterTaps = std::move(read);
  refresh();
  return true;
}

bool ChannelFilterEditorDialog::saveFilterFile(const QString& path) const {
  CsvTable csv;
  for (size_t row = 0; row < filterTaps.size(); ++row) {
    csv.setCell(static_cast<int>(row), 0, fileTap(filterTaps[row].real()));
    csv.setCell(static_cast<int>(row), 1, fileTap(filterTaps[row].imag()));
  }
  return csv.save(path);
}

void ChannelFilterEditorDialog::refresh() {
  table->setRowCount(static_cast<int>(filterTaps.size()));
  {
    const QSignalBlocker blocker(table);
    for (size_t row = 0; row < filterTaps.size(); ++row) {
      table->item(static_cast<int>(row), 0)->setText(formatTap(filterTaps[row].real()));
      table->item(static_cast<int>(row), 1)->setText(formatTap(filterTaps[row].imag()));
    }
  }
  updatePlots();
}

void ChannelFilterEditorDialog::updatePlots() {
  impulsePlot->clearSeries();
  spectrumPlot->clearSeries();
  if (!filterTaps.empty()) {
    const int n = static_cast<int>(filterTaps.size());
    PlotSeries* real = impulsePlot->addSeries();
    PlotSeries* imag = impulsePlot->addSeries();
    real->color = Qt::red;
    imag->color = Qt::green;
    real->points.resize(filterTaps.size());
    imag->points.resize(filterTaps.size());
    float low = filterTaps[0].real(), high = low;
    for (int k = 0; k < n; ++k) {
      const Sample tap = filterTaps[static_cast<size_t>(k)];
      real->points[static_cast<size_t>(k)] = {k + 1, tap.real()};
      imag->points[static_cast<size_t>(k)] = {k + 1, tap.imag()};
      low = std::min({low, tap.real(), tap.imag()});
      high = std::max({high, tap.real(), tap.imag()});
    }
    impulsePlot->setXRange(1, n);
    impulsePlot->setYRange(low, high);

    // Zero frequency in the middle: bin k + 512 (mod 1024) at -0.5 + k / 1024.
    const std::vector<float> power = tapSpectrumDb(filterTaps.data(), n);
    PlotSeries* spectrum = spectrumPlot->addSeries();
    spectrum->color = Qt::blue;
    spectrum->points.resize(tapSpectrumSize);
    for (int k = 0; k < tapSpectrumSize; ++k)
      spectrum->points[static_cast<size_t>(k)] = {
          -0.5 + static_cast<double>(k) / tapSpectrumSize,
          power[static_cast<size_t>((k + tapSpectrumSize / 2) % tapSpectrumSize)]};
    const auto [lowDb, highDb] = std::minmax_element(power.begin(), power.end());
    spectrumPlot->setXRange(-0.5, 0.5);
    spectrumPlot->setYRange(*lowDb - 2.0, *highDb + 2.0);
  }
  impulsePlot->update();
  spectrumPlot->update();
}
