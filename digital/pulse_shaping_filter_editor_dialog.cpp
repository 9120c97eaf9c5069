// SPDX-License-Identifier: MIT
// Editor of the real pulse-shaping taps of the digital mode, with built-in designs and files.
#include "digital/pulse_shaping_filter_editor_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/filter_designs.h"
#include "digital/filter_editor_support.h"
#include "modes/csv_table.h"
#include "shell/file_dialogs.h"
#include "widgets/am_plot.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace filter_editor;

PulseShapingFilterEditorDialog::PulseShapingFilterEditorDialog(const std::vector<float>& taps,
                                                               int os, QWidget* parent)
    : QDialog(parent),
      filterTaps(taps),
      table(new BasicTableWidget(0, 1, this)),
      impulsePlot(new AMPlot(this)),
      spectrumPlot(new AMPlot(this)),
      os(os),
      designTaps(os * 8 + 1) {
  setWindowTitle("Custom Filter");
  table->setHorizontalHeaderLabels({"Filter Tap"});
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  connect(table, &QTableWidget::itemChanged, this, &PulseShapingFilterEditorDialog::tableUpdated);

  impulsePlot->setTitle("Impulse");
  impulsePlot->setXLabel("Samples");
  spectrumPlot->setTitle("Spectrum");
  spectrumPlot->setXLabel("Freq");

  using Slot = void (PulseShapingFilterEditorDialog::*)();
  const std::pair<QString, Slot> actions[] = {
      {"Add Row", &PulseShapingFilterEditorDialog::addRow},
      {"Remove Row", &PulseShapingFilterEditorDialog::removeRow},
      {QStringLiteral("Load RRC (\u03b1 = 0.35)"), &PulseShapingFilterEditorDialog::loadRRC},
      {"Load Gaussian (0.5)", &PulseShapingFilterEditorDialog::loadGaussian},
      {"Load Rectangular Window", &PulseShapingFilterEditorDialog::loadRectFilter},
      {"Load Half Sine", &PulseShapingFilterEditorDialog::loadHalfSine},
      {"Load Filter", &PulseShapingFilterEditorDialog::loadFilter},
      {"Save Filter", &PulseShapingFilterEditorDialog::saveFilter},
      {"Accept", &PulseShapingFilterEditorDialog::finalCheck}};
  auto* buttons = new QGridLayout();
  int index = 0;
  for (const auto& [text, slot] : actions) {
    auto* button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, slot);
    buttons->addWidget(button, index / 2, index % 2);
    ++index;
  }

  auto* left = new QVBoxLayout();
  left->addWidget(table);
  left->addWidget(new QLabel(QString::asprintf("Oversample = %d", os), this));
  left->addLayout(buttons);
  auto* right = new QVBoxLayout();
  right->addWidget(impulsePlot);
  right->addWidget(spectrumPlot);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left, 1);
  layout->addLayout(right, 2);
  resize(900, 600);

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

void PulseShapingFilterEditorDialog::loadFilter() {
  const QString path = openFileName(loadCaption, fileFilter, this);
  if (!path.isEmpty() && !loadFilterFile(path)) warnLoadFailed(this);
}

void PulseShapingFilterEditorDialog::saveFilter() {
  const QString path = saveFileName(saveCaption, fileFilter, this);
  if (!path.isEmpty() && !saveFilterFile(path)) warnSaveFailed(this);
}

void PulseShapingFilterEditorDialog::finalCheck() {
  if (checkTapCount(this, static_cast<int>(filterTaps.size()))) accept();
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
