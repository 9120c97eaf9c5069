// SPDX-License-Identifier: MIT
// The "Signal Impairments" panel.
#include "core/impairment_widget.h"

#include "modes/mode_types.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

std::vector<Sample> passThroughFilter() {
  std::vector<Sample> taps(ImpairmentWidget::passThroughTaps);
  taps[ImpairmentWidget::passThroughTaps / 2] = Sample(1.0f, 0.0f);
  return taps;
}

double numberOr(const QSettings& settings, const char* key, double current) {
  const double value = settings.value(key, current).toDouble();
  return std::isnan(value) ? current : value;
}

}  // namespace

ImpairmentWidget::ImpairmentWidget(QWidget* parent)
    : QWidget(parent),
      timebaseEdit(new DoubleEdit(-maxTimebaseAdjust, maxTimebaseAdjust, 3, 0.0, this)),
      frequencyOffsetEdit(new FrequencyEdit(0.0, this)),
      lowSpurCheck(new QCheckBox(this)),
      iOffsetEdit(new IntLineEdit(this)),
      qOffsetEdit(new IntLineEdit(this)),
      sampleRateErrorEdit(new DoubleEdit(-maxSampleRateError, maxSampleRateError, 3, 0.0, this)),
      awgnCheck(new QCheckBox(this)),
      awgnSnrEdit(new DoubleEdit(0.0, maxSnr, 2, 0.0, this)),
      awgnBandwidthEdit(new FrequencyEdit(1e7, this)),
      channelFilterCheck(new QCheckBox(this)),
      defineFilterButton(new QPushButton("Define Channel Filter", this)),
      channelFilterTaps(passThroughFilter()),
      filterEditor(runChannelFilterEditor) {
  buildForm();
  connectControls();
  setDefaults();
}

void ImpairmentWidget::buildForm() {
  timebaseEdit->setStep(0.01);
  timebaseEdit->setArrowKeys(true);
  lowSpurCheck->setChecked(true);
  for (IntLineEdit* edit : {iOffsetEdit, qOffsetEdit}) edit->setRange(-maxIQOffset, maxIQOffset);
  defineFilterButton->setAutoDefault(false);

  auto* form = new MyFormLayout();
  form->addRow("Timebase Offset (ppm)", timebaseEdit);
  form->addRow("Frequency Offset", frequencyOffsetEdit);
  form->addRow("Low Spur Mode", lowSpurCheck);
  form->addRow("I Offset", iOffsetEdit);
  form->addRow("Q Offset", qOffsetEdit);
  form->addRow("Sample Rate Error (ppm)", sampleRateErrorEdit);
  form->addRow("AWGN Enabled", awgnCheck);
  form->addRow("AWGN SNR (dB)", awgnSnrEdit);
  form->addRow("AWGN Bandwidth", awgnBandwidthEdit);
  form->addRow("Channel Filter Enabled", channelFilterCheck);
  form->addRow("", defineFilterButton);
  auto* row = new QHBoxLayout(this);
  row->addLayout(form);
  row->addStretch(1);
}

void ImpairmentWidget::connectControls() {
  connect(timebaseEdit, &DoubleEdit::editUpdated, this, &ImpairmentWidget::setTimebaseAdjust);
  connect(frequencyOffsetEdit, &FrequencyEdit::valueChanged, this,
          &ImpairmentWidget::setFrequencyOffset);
  // The box is the store; a click restarts with the new state.
  connect(lowSpurCheck, &QCheckBox::toggled, this, [this](bool on) { lowSpur = on; });
  connect(lowSpurCheck, &QCheckBox::clicked, this, &ImpairmentWidget::impairmentsChanged);
  connect(iOffsetEdit, &IntLineEdit::valueChanged, this, &ImpairmentWidget::setIOffset);
  connect(qOffsetEdit, &IntLineEdit::valueChanged, this, &ImpairmentWidget::setQOffset);
  connect(sampleRateErrorEdit, &DoubleEdit::editUpdated, this,
          &ImpairmentWidget::setSampleRateError);
  connect(awgnCheck, &QCheckBox::toggled, this, [this](bool on) { awgnOn = on; });
  connect(awgnCheck, &QCheckBox::clicked, this, &ImpairmentWidget::setAWGNEnabled);
  connect(awgnSnrEdit, &DoubleEdit::editUpdated, this, &ImpairmentWidget::setAWGNSNR);
  connect(awgnBandwidthEdit, &FrequencyEdit::valueChanged, this, &ImpairmentWidget::setAWGNBW);
  connect(channelFilterCheck, &QCheckBox::toggled, this, [this](bool on) { channelFilterOn = on; });
  connect(channelFilterCheck, &QCheckBox::clicked, this,
          &ImpairmentWidget::setChannelFilterEnabled);
  connect(defineFilterButton, &QPushButton::clicked, this, &ImpairmentWidget::defineChannelFilter);
  // The streaming thread reports the bandwidth it used through the event loop.
  connect(this, &ImpairmentWidget::forceAWGNBandwidthSignal, this,
          &ImpairmentWidget::forceAWGNBandwidthSlot, Qt::QueuedConnection);
}

// ---- Values ---------------------------------------------------------------------------------

double ImpairmentWidget::frequencyOffset() const { return frequencyOffsetEdit->value(); }

double ImpairmentWidget::sampleRateFactor() const {
  return sampleRateErrorEdit->value() * 1e-6 + 1.0;
}

double ImpairmentWidget::sampleRateError() const { return sampleRateErrorEdit->value(); }

std::pair<int16_t, int16_t> ImpairmentWidget::iqOffset() const {
  return {static_cast<int16_t>(iOffsetEdit->value()), static_cast<int16_t>(qOffsetEdit->value())};
}

double ImpairmentWidget::timebaseOffset() const { return timebaseEdit->value(); }
double ImpairmentWidget::awgnSnr() const { return awgnSnrEdit->value(); }
double ImpairmentWidget::awgnBandwidth() const { return awgnBandwidthEdit->value(); }

std::vector<Sample> ImpairmentWidget::channelFilter() const {
  std::lock_guard<std::mutex> guard(channelFilterLock);
  return channelFilterTaps;
}

void ImpairmentWidget::setChannelFilterTaps(std::vector<Sample> taps) {
  std::lock_guard<std::mutex> guard(channelFilterLock);
  channelFilterTaps = std::move(taps);
}

// ---- Slots ----------------------------------------------------------------------------------

void ImpairmentWidget::setTimebaseAdjust(double ppm) {
  timebaseEdit->setValue(clampOr(ppm, -maxTimebaseAdjust, maxTimebaseAdjust, timebaseOffset()));
  emit impairmentsChanged();
}

void ImpairmentWidget::setFrequencyOffset(double offsetHz) {
  frequencyOffsetEdit->setValue(offsetHz);
  emit impairmentsChanged();
}

void ImpairmentWidget::setLowSpurMode(bool enabled) {
  lowSpurCheck->setChecked(enabled);
  emit impairmentsChanged();
}

void ImpairmentWidget::setIOffset(int offset) {
  iOffsetEdit->setValue(std::clamp(offset, -maxIQOffset, maxIQOffset));
  emit impairmentsChanged();
}

void ImpairmentWidget::setQOffset(int offset) {
  qOffsetEdit->setValue(std::clamp(offset, -maxIQOffset, maxIQOffset));
  emit impairmentsChanged();
}

void ImpairmentWidget::setSampleRateError(double ppm) {
  sampleRateErrorEdit->setValue(
      clampOr(ppm, -maxSampleRateError, maxSampleRateError, sampleRateError()));
  emit impairmentsChanged();
}

void ImpairmentWidget::setAWGNEnabled(bool enabled) {
  awgnCheck->setChecked(enabled);
  emit impairmentsChanged();
}

void ImpairmentWidget::setAWGNSNR(double snrDb) {
  awgnSnrEdit->setValue(clampOr(snrDb, 0.0, maxSnr, awgnSnr()));
  emit impairmentsChanged();
}

void ImpairmentWidget::setAWGNBW(double) { emit impairmentsChanged(); }

void ImpairmentWidget::setChannelFilterEnabled(bool enabled) {
  channelFilterCheck->setChecked(enabled);
  emit impairmentsChanged();
}

void ImpairmentWidget::defineChannelFilter() {
  std::vector<Sample> taps = channelFilter();
  if (filterEditor && filterEditor(this, taps)) setChannelFilterTaps(std::move(taps));
  emit impairmentsChanged();
}

void ImpairmentWidget::forceAWGNBandwidthSlot(double bw) { awgnBandwidthEdit->setValue(bw); }

// ---- Defaults and presets -------------------------------------------------------------------

void ImpairmentWidget::setDefaults() {
  setChannelFilterTaps(passThroughFilter());
  setTimebaseAdjust(0.0);
  setFrequencyOffset(0.0);
  setIOffset(0);
  setQOffset(0);
  setSampleRateError(0.0);
  setAWGNEnabled(false);
  setAWGNSNR(maxSnr);
  awgnBandwidthEdit->setValue(1e7);
  setAWGNBW(1e7);
  setChannelFilterEnabled(false);
}

void ImpairmentWidget::saveSettings(QSettings* settings) {
  settings->beginGroup("Impairments");
  settings->setValue("TimebaseAdjust", timebaseOffset());
  settings->setValue("FreqOffset", frequencyOffset());
  settings->setValue("LowSpurMode", lowSpurMode());
  settings->setValue("IOffset", iOffsetEdit->value());
  settings->setValue("QOffset", qOffsetEdit->value());
  settings->setValue("SampleRateError", sampleRateError());
  settings->setValue("AWGNEnabled", awgnEnabled());
  settings->setValue("AWGNSNR", awgnSnr());
  settings->setValue("AWGNBW", awgnBandwidth());
  settings->setValue("ChannelFilterEnabled", channelFilterEnabled());
  const std::vector<Sample> taps = channelFilter();
  settings->beginWriteArray("ChannelFilter", static_cast<int>(taps.size()));
  for (int i = 0; i < static_cast<int>(taps.size()); ++i) {
    settings->setArrayIndex(i);
    settings->setValue("Real", static_cast<double>(taps[i].real()));
    settings->setValue("Imag", static_cast<double>(taps[i].imag()));
  }
  settings->endArray();
  settings->endGroup();
}

// Each value as stored, but for the I/Q offsets, which are clamped; a value that isn't a number
// keeps the control's. Every key restarts the output, as an edit would.
void ImpairmentWidget::loadSettings(QSettings* settings) {
  settings->beginGroup("Impairments");
  const auto load = [this](auto apply) {
    apply();
    emit impairmentsChanged();
  };
  load([&] { timebaseEdit->setValue(numberOr(*settings, "TimebaseAdjust", timebaseOffset())); });
  load(
      [&] { frequencyOffsetEdit->setValue(numberOr(*settings, "FreqOffset", frequencyOffset())); });
  load([&] { lowSpurCheck->setChecked(settings->value("LowSpurMode", lowSpurMode()).toBool()); });
  load([&] {
    iOffsetEdit->setValue(std::clamp(settings->value("IOffset", iOffsetEdit->value()).toInt(),
                                     -maxIQOffset, maxIQOffset));
  });
  load([&] {
    qOffsetEdit->setValue(std::clamp(settings->value("QOffset", qOffsetEdit->value()).toInt(),
                                     -maxIQOffset, maxIQOffset));
  });
  load([&] {
    sampleRateErrorEdit->setValue(numberOr(*settings, "SampleRateError", sampleRateError()));
  });
  load([&] { awgnCheck->setChecked(settings->value("AWGNEnabled", awgnEnabled()).toBool()); });
  load([&] { awgnSnrEdit->setValue(numberOr(*settings, "AWGNSNR", awgnSnr())); });
  load([&] { awgnBandwidthEdit->setValue(numberOr(*settings, "AWGNBW", awgnBandwidth())); });
  load([&] {
    channelFilterCheck->setChecked(
        settings->value("ChannelFilterEnabled", channelFilterEnabled()).toBool());
  });
  // The count is the file's word: a negative one reads no taps, and one beyond what any
  // editor makes reads only that many, so a garbled count can't claim gigabytes.
  const int count = std::clamp(settings->beginReadArray("ChannelFilter"), 0, maxChannelFilterTaps);
  std::vector<Sample> taps(static_cast<size_t>(count));
  for (int i = 0; i < static_cast<int>(taps.size()); ++i) {
    settings->setArrayIndex(i);
    taps[i] = Sample(static_cast<float>(numberOr(*settings, "Real", 0.0)),
                     static_cast<float>(numberOr(*settings, "Imag", 0.0)));
  }
  settings->endArray();
  setChannelFilterTaps(std::move(taps));
  settings->endGroup();
}

// ---- Stage ----------------------------------------------------------------------------------

void ImpairmentWidget::applyChannelFilter(Sample* samples, int length) {
  if (channelFilterEnabled()) applyCircularFir(channelFilter(), samples, length);
}

void ImpairmentWidget::prepareNoise(double signalPowerDb, double sampleRateHz) {
  if (!awgnEnabled()) return;
  emit forceAWGNBandwidthSignal(
      noiseStage.prepare(signalPowerDb, sampleRateHz, awgnSnr(), awgnBandwidth()));
}

void ImpairmentWidget::process(const Sample* in, Sample* out, int count) {
  if (awgnEnabled() && !noiseStage.noise.empty())
    noiseStage.add(in, out, count);
  else if (count > 0 && in != out)
    std::memcpy(out, in, sizeof(Sample) * static_cast<size_t>(count));
}
