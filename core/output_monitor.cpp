// SPDX-License-Identifier: MIT
// The "Output Monitor" dock's panel: spectrum, CCDF and I/Q of what goes to the device, live.
#include "core/output_monitor.h"

#include "core/device.h"
#include "widgets/am_plot.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMutexLocker>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kDefaultBins = 4096;
// Points drawn: a plot is a few hundred pixels wide, so the spectrum is drawn as the maximum of
// each group of bins and the I/Q view shows the start of the snapshot.
constexpr int kSpectrumPoints = 2048;
constexpr int kIqPoints = 2000;
constexpr int kIqTracePoints = 400;
constexpr double kSpectrumTopDbfs = 10.0;
constexpr double kSpectrumBottomDbfs = -140.0;
// CCDF drawn as log10 of the percentage: 100 % at the top down to 0.001 %.
constexpr double kCcdfTopLog = 2.0;
constexpr double kCcdfBottomLog = -3.0;

AMPlot* makePlot(const QString& title, const QString& xLabel) {
  auto* plot = new AMPlot;
  plot->setTitle(title);
  plot->setXLabel(xLabel);
  plot->setMinimumSize(160, 150);
  return plot;
}

PlotSeries* makeSeries(AMPlot* plot, QColor color, int style) {
  PlotSeries* series = plot->addSeries();
  series->color = color;
  series->style = style;
  return series;
}

// The smallest round number at or above a positive value: a step of a power of ten whose
// tenths are short labels.
double niceCeiling(double value) {
  const double decade = std::pow(10.0, std::floor(std::log10(value)));
  for (double step : {1.0, 1.2, 1.5, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0})
    if (step * decade >= value) return step * decade;
  return 10.0 * decade;
}

QString dbText(double value, const char* unit) {
  return std::isfinite(value) ? QString("%1 %2").arg(value, 0, 'f', 2).arg(unit) : QString("--");
}

}  // namespace

OutputMonitor::OutputMonitor(Device* device, QWidget* parent) : QWidget(parent), device(device) {
  spectrumAverager.setBins(kDefaultBins);
  spectrumPlot = makePlot("Spectrum (dBFS)", "Frequency (MHz)");
  spectrumSeries = makeSeries(spectrumPlot, Qt::blue, 1);
  ccdfPlot = makePlot("CCDF (log10 %)", "dB above mean");
  gaussianSeries = makeSeries(ccdfPlot, Qt::gray, 1);
  gaussianSeries->name = "Gaussian noise";
  ccdfSeries = makeSeries(ccdfPlot, Qt::blue, 1);
  iqPlot = makePlot("I/Q", "I");
  iqSeries = makeSeries(iqPlot, Qt::blue, 0);
  // The reference every CCDF is read against: complex Gaussian noise, P(x) = exp(-10^(x/10)).
  for (double db = 0.0; db <= 12.0; db += 0.05) {
    const double percent = 100.0 * std::exp(-std::pow(10.0, db / 10.0));
    if (percent > 0.0) gaussianSeries->points.emplace_back(db, std::log10(percent));
  }
  ccdfPlot->setYRange(kCcdfBottomLog, kCcdfTopLog);
  ccdfPlot->setXRange(0.0, 12.0);
  spectrumPlot->setYRange(kSpectrumBottomDbfs, kSpectrumTopDbfs);
  iqPlot->setXRange(-1.0, 1.0);
  iqPlot->setYRange(-1.0, 1.0);

  auto* plots = new QHBoxLayout;
  plots->addWidget(buildReadouts());
  plots->addWidget(spectrumPlot, 5);
  plots->addWidget(ccdfPlot, 3);
  plots->addWidget(iqPlot, 2);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(buildControls());
  layout->addLayout(plots, 1);

  timer = new QTimer(this);
  timer->setInterval(50);
  connect(timer, &QTimer::timeout, this, &OutputMonitor::refresh);
}

QWidget* OutputMonitor::buildControls() {
  auto* box = new QWidget;
  auto* row = new QHBoxLayout(box);
  row->setContentsMargins(0, 0, 0, 0);
  binsCombo = new QComboBox;
  for (int bins = SpectrumAverager::minBins; bins <= SpectrumAverager::maxBins; bins *= 2)
    binsCombo->addItem(QString::number(bins), bins);
  binsCombo->setCurrentText(QString::number(kDefaultBins));
  connect(binsCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
          [this] { setBins(binsCombo->currentData().toInt()); });
  averagesSpin = new QSpinBox;
  averagesSpin->setRange(1, 100);
  averagesSpin->setValue(10);
  connect(averagesSpin, qOverload<int>(&QSpinBox::valueChanged), this,
          [this](int n) { spectrumAverager.setAverages(n); });
  iqStyleCombo = new QComboBox;
  iqStyleCombo->addItems({"Points", "Trace"});
  freezeCheck = new QCheckBox("Freeze");
  auto* clear = new QPushButton("Clear");
  connect(clear, &QPushButton::clicked, this, &OutputMonitor::clearFigures);
  auto* csv = new QPushButton("Save CSV");
  connect(csv, &QPushButton::clicked, this, &OutputMonitor::saveCsvClicked);
  auto* png = new QPushButton("Save PNG");
  connect(png, &QPushButton::clicked, this, &OutputMonitor::savePngClicked);

  row->addWidget(new QLabel("Bins"));
  row->addWidget(binsCombo);
  row->addWidget(new QLabel("Averages"));
  row->addWidget(averagesSpin);
  row->addWidget(new QLabel("I/Q View"));
  row->addWidget(iqStyleCombo);
  row->addStretch(1);
  for (QWidget* w : std::initializer_list<QWidget*>{freezeCheck, clear, csv, png}) row->addWidget(w);
  return box;
}

// A column beside the plots, so that the dock stays narrow enough for the window's side.
QWidget* OutputMonitor::buildReadouts() {
  auto* box = new QWidget;
  auto* column = new QVBoxLayout(box);
  column->setContentsMargins(0, 0, 0, 0);
  const auto add = [column](const QString& name) {
    column->addWidget(new QLabel(name));
    auto* value = new QLabel("--");
    value->setMinimumWidth(120);
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(value);
    return value;
  };
  rateLabel = add("Sample Rate:");
  meanLabel = add("Mean Power:");
  paprLabel = add("PAPR (0.01 %):");
  sentLabel = add("Samples Sent:");
  underrunLabel = add("Underruns:");
  column->addStretch(1);
  return box;
}

// The I/Q plot is kept about square, so that a circle of constant envelope looks like one (the
// allowance is for its axis labels), leaving the spectrum the larger share.
void OutputMonitor::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  const int square = std::min(iqPlot->height() + 40, width() * 3 / 10);
  iqPlot->setFixedWidth(std::max(iqPlot->minimumHeight(), square));
}

// The tap copies only while someone looks.
void OutputMonitor::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  device->outputTap().setEnabled(true);
  timer->start();
}

void OutputMonitor::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  device->outputTap().setEnabled(false);
  timer->stop();
}

void OutputMonitor::setFrozen(bool frozen) { freezeCheck->setChecked(frozen); }
bool OutputMonitor::frozen() const { return freezeCheck->isChecked(); }

void OutputMonitor::setBins(int bins) {
  spectrumAverager.setBins(bins);
  binsCombo->setCurrentText(QString::number(spectrumAverager.bins()));
}

void OutputMonitor::clearFigures() {
  spectrumAverager.reset();
  ccdfAccumulator.reset();
}

bool OutputMonitor::refresh() {
  const OutputSnapshot* snapshot = device->outputTap().take();
  if (!snapshot || snapshot->count < 1 || frozen()) return false;
  showSnapshot(*snapshot);
  return true;
}

void OutputMonitor::showSnapshot(const OutputSnapshot& snapshot) {
  takeSnapshot(snapshot);
  plotSpectrum();
  plotCcdf();
  plotIq(snapshot);
  showReadouts(snapshot);
}

// A restart, a retune or a new rate begin new figures: the old ones describe another signal.
void OutputMonitor::takeSnapshot(const OutputSnapshot& snapshot) {
  if (!seenSnapshot || snapshot.generation != generation ||
      snapshot.centerFrequencyHz != centerHz || snapshot.sampleRateHz != rateHz)
    clearFigures();
  seenSnapshot = true;
  generation = snapshot.generation;
  centerHz = snapshot.centerFrequencyHz;
  rateHz = snapshot.sampleRateHz;
  spectrumAverager.add(snapshot.samples.data(), snapshot.count);
  ccdfAccumulator.add(snapshot.samples.data(), snapshot.count);
}

void OutputMonitor::plotSpectrum() {
  const std::vector<float> levels = spectrumAverager.levelsDbfs();
  const int bins = static_cast<int>(levels.size());
  const int group = std::max(1, bins / kSpectrumPoints);
  const double binHz = rateHz / bins;
  QMutexLocker locker(&spectrumPlot->lock);
  spectrumSeries->points.clear();
  for (int k = 0; k + group <= bins; k += group) {
    const float peak = *std::max_element(levels.begin() + k, levels.begin() + k + group);
    const double x = (centerHz + (k + (group - 1) / 2.0 - bins / 2) * binHz) / 1e6;
    spectrumSeries->points.emplace_back(x, std::max<double>(peak, kSpectrumBottomDbfs));
  }
  spectrumPlot->setXRange((centerHz - rateHz / 2) / 1e6, (centerHz + rateHz / 2 - binHz) / 1e6);
  spectrumPlot->update();
}

void OutputMonitor::plotCcdf() {
  const std::vector<std::pair<double, double>> curve = ccdfAccumulator.curve();
  QMutexLocker locker(&ccdfPlot->lock);
  ccdfSeries->points.clear();
  // Every fifth 0.01 dB class is enough to draw.
  for (size_t k = 0; k < curve.size(); k += 5) {
    const double percent = curve[k].second;
    if (percent > 0.0) ccdfSeries->points.emplace_back(curve[k].first, std::log10(percent));
  }
  const double top = curve.empty() ? 0.0 : curve.back().first;
  ccdfPlot->setXRange(0.0, std::max(12.0, std::ceil(top / 2.0) * 2.0));
  ccdfPlot->update();
}

void OutputMonitor::plotIq(const OutputSnapshot& snapshot) {
  const bool trace = iqStyleCombo->currentIndex() == 1;
  const int count = std::min(snapshot.count, trace ? kIqTracePoints : kIqPoints);
  float peak = 0.0f;
  QMutexLocker locker(&iqPlot->lock);
  iqSeries->style = trace ? 1 : 0;
  iqSeries->points.resize(static_cast<size_t>(count));
  for (int k = 0; k < count; ++k) {
    const Sample s = snapshot.samples[static_cast<size_t>(k)];
    iqSeries->points[static_cast<size_t>(k)] = {s.real(), s.imag()};
    peak = std::max({peak, std::abs(s.real()), std::abs(s.imag())});
  }
  // Scaled to the signal, so that a low level still shows its shape, to a round number that
  // keeps the axis labels short; never below 1/1000 of full scale.
  const double range = niceCeiling(1.05 * std::max(peak, 1e-3f));
  iqPlot->setXRange(-range, range);
  iqPlot->setYRange(-range, range);
  iqPlot->update();
}

void OutputMonitor::showReadouts(const OutputSnapshot& snapshot) {
  rateLabel->setText(QString::number(snapshot.sampleRateHz / 1e6, 'g', 10) + " MSa/s");
  meanLabel->setText(dbText(ccdfAccumulator.meanPowerDbfs(), "dBFS"));
  paprLabel->setText(dbText(ccdfAccumulator.paprDb(), "dB"));
  sentLabel->setText(QString::number(device->outputTap().samplesSent()));
  underrunLabel->setText(QString::number(snapshot.underruns));
}
