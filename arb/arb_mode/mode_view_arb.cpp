// SPDX-License-Identifier: MIT
// The arbitrary waveform view (mode 13): a waveform held in memory, its play range and scale.
#include "arb/arb_mode/mode_view_arb.h"

#include "arb/arb_config.h"
#include "arb/arb_view_support.h"
#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "arb/csv_file_reader.h"
#include "arb/iq_file_loading.h"
#include "arb/midas_blue_file.h"
#include "arb/sigmf_reader.h"
#include "arb/wav_reader.h"
#include "modes/mode_types.h"
#include "shell/error_queue.h"
#include "shell/file_dialogs.h"
#include "shell/message_box.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/unit_format.h"

#include <QCheckBox>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

// Value 9 goes beyond the instrument's list: SigMF is how most SDR tools exchange I/Q today.
const LoadRow loadRows[] = {
    {1, "I/Q CSV", "CSV I/Q File (*.csv *.txt)", "CSV I/Q File"},
    {2, "I/Q binary (16-bit int complex)", "Binary (*.bin *.dat *.iq *.raw)",
     "Binary 16-bit complex int I/Q File"},
    {3, "I/Q binary (32-bit float complex)", "Binary (*.bin *.dat *.iq *.raw)",
     "Binary 32-bit complex float I/Q File"},
    {4, "Midas Blue", "Blue Files (*.tmp *.prm)", "Blue Files"},
    {7, "WAV", "WAV Files (*.wav)", "WAV File"},
    {8, "Custom Sequence", "Arb Sequence (*.seq)", "Custom Sequence File"},
    {9, "SigMF", "SigMF Recording (*.sigmf-meta *.sigmf-data)", "SigMF Recording"},
};

}  // namespace

ModeViewArb::ModeViewArb(QWidget* parent)
    : ModeWidget("Arb", 13, parent),
      triggerCombo(new MyComboBox(this)),
      sampleRateEdit(new FrequencyEdit(5e7, this)),
      autoScaleCheck(new QCheckBox(this)),
      referenceScaleEdit(new DoubleEdit(this)),
      averageCheck(new QCheckBox(this)),
      periodEdit(new IntLineEdit(this)),
      offsetEdit(new IntLineEdit(this)),
      samplesToUseEdit(new IntLineEdit(this)),
      loadCombo(new MyComboBox(this)),
      fileNameLabel(new QLabel(this)),
      fileSamplesLabel(new QLabel(this)),
      signalLengthLabel(new QLabel(this)),
      periodLengthLabel(new QLabel(this)) {
  for (int value = 0; value < 2; ++value) triggerCombo->addItem(triggerTypeTexts[value], value);
  autoScaleCheck->setChecked(true);
  referenceScaleEdit->setValue(100.0);
  referenceScaleEdit->setEnabled(false);
  averageCheck->setChecked(true);
  loadCombo->addItem("", 0);
  for (const LoadRow& row : loadRows) loadCombo->addItem(row.text, row.value);
  addControls();
  refreshLabels();
}

void ModeViewArb::addControls() {
  auto* unload = new QPushButton("Unload File", this);
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Sample Rate", sampleRateEdit);
  formLayout->addRow("Auto Scale", autoScaleCheck);
  formLayout->addRow("I/Q Scale (%)", referenceScaleEdit);
  formLayout->addRow("Output Signal Average", averageCheck);
  formLayout->addRow("Period", periodEdit);
  formLayout->addRow("Sample Offset", offsetEdit);
  formLayout->addRow("Samples To Use", samplesToUseEdit);
  formLayout->addRow("Load", loadCombo);
  formLayout->addRow("", unload);
  formLayout->addRow("File Name", fileNameLabel);
  formLayout->addRow("Samples In File", fileSamplesLabel);
  formLayout->addRow("Signal Len", signalLengthLabel);
  formLayout->addRow("Period Len", periodLengthLabel);
  connect(triggerCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &ModeViewArb::triggerModeIndexChanged);
  connect(sampleRateEdit, &FrequencyEdit::valueChanged, this, &ModeViewArb::setSampleRate);
  connect(autoScaleCheck, &QCheckBox::clicked, this, &ModeViewArb::setAutoScaling);
  connect(referenceScaleEdit, &DoubleEdit::editUpdated, this, &ModeViewArb::setReferenceScale);
  connect(averageCheck, &QCheckBox::clicked, this, &ModeViewArb::setOutputSignalAverage);
  connect(periodEdit, &IntLineEdit::valueChanged, this, &ModeViewArb::setPeriod);
  connect(offsetEdit, &IntLineEdit::valueChanged, this, &ModeViewArb::setSampleOffset);
  connect(samplesToUseEdit, &IntLineEdit::valueChanged, this, &ModeViewArb::setSamplesToUse);
  connect(loadCombo, QOverload<int>::of(&QComboBox::activated), this,
          &ModeViewArb::loadWaveformPressed);
  connect(unload, &QPushButton::clicked, this, &ModeViewArb::unloadFileButtonPressed);
}

// ---- Reading -------------------------------------------------------------------------------

ArbInfo ModeViewArb::getArbInfo() const {
  const std::lock_guard<std::mutex> hold(lock);
  return info;
}

int ModeViewArb::triggerMode() const { return triggerCombo->currentValue(); }
bool ModeViewArb::autoScaling() const {
  const std::lock_guard<std::mutex> hold(lock);
  return autoScale;
}
double ModeViewArb::referenceScale() const { return referenceScaleEdit->value(); }
bool ModeViewArb::outputSignalAverage() const {
  const std::lock_guard<std::mutex> hold(lock);
  return average;
}

ArbPlaySettings ModeViewArb::playSettings(const ArbInfo& arb) const {
  ArbPlaySettings s;
  s.sampleRateHz = arb.sampleRate;
  s.sampleOffset = arb.sampleOffset;
  s.samplesToUse = arb.samplesToUse;
  s.period = arb.period;
  s.autoScale = autoScaling();
  s.referenceScale = referenceScale();
  s.outputSignalAverage = outputSignalAverage();
  return s;
}

// ---- Setters -------------------------------------------------------------------------------

// A box whose selection moves reports the change itself, so each call restarts once.
void ModeViewArb::triggerModeIndexChanged(int index) {
  if (!triggerCombo->selectValue(index)) emit updated();
}

void ModeViewArb::setSampleRate(double rate) {
  rate = clampLogged(rate, minSampleRate, maxSampleRate, sampleRateEdit->value(),
                     "Arb sample rate clamped");
  sampleRateEdit->setValue(rate);
  {
    const std::lock_guard<std::mutex> hold(lock);
    info.sampleRate = rate;
  }
  refreshLabels();
  emit updated();
}

void ModeViewArb::setReferenceScale(double percent) {
  referenceScaleEdit->setValue(clampLogged(percent, minReferenceScale, maxReferenceScale,
                                           referenceScale(), "Arb I/Q scale clamped"));
  refreshLabels();
  emit updated();
}

void ModeViewArb::setAutoScaling(bool enabled) {
  autoScaleCheck->setChecked(enabled);
  {
    const std::lock_guard<std::mutex> hold(lock);
    autoScale = enabled;
  }
  refreshLabels();
  emit updated();
}

void ModeViewArb::setOutputSignalAverage(bool enabled) {
  averageCheck->setChecked(enabled);
  {
    const std::lock_guard<std::mutex> hold(lock);
    average = enabled;
  }
  emit updated();
}

bool ModeViewArb::clampPeriod() {
  const int period = std::clamp(info.period, std::min(info.samplesToUse, maxPeriod), maxPeriod);
  const bool moved = period != info.period;
  info.period = period;
  return moved;
}

void ModeViewArb::setPeriod(int period) {
  bool moved = false;
  {
    const std::lock_guard<std::mutex> hold(lock);
    info.period = period;
    moved = clampPeriod();
  }
  if (moved) errorLogPut(-1, "Arb period clamped");
  refreshLabels();
  emit updated();
}

void ModeViewArb::setSampleOffset(int offset) {
  bool offsetMoved = false, periodMoved = false;
  {
    const std::lock_guard<std::mutex> hold(lock);
    info.sampleOffset = std::clamp(offset, 0, info.fileLength);
    offsetMoved = info.sampleOffset != offset;
    info.samplesToUse = std::min(info.samplesToUse, info.fileLength - info.sampleOffset);
    periodMoved = clampPeriod();
  }
  if (offsetMoved) errorLogPut(-1, "Arb sample offset clamped");
  if (periodMoved) errorLogPut(-1, "Arb period clamped");
  refreshLabels();
  emit updated();
}

// No lower bound: a negative count is stored and plays nothing.
void ModeViewArb::setSamplesToUse(int count) {
  bool periodMoved = false;
  {
    const std::lock_guard<std::mutex> hold(lock);
    info.samplesToUse = std::min(count, info.fileLength - info.sampleOffset);
    periodMoved = clampPeriod();
  }
  if (periodMoved) errorLogPut(-1, "Arb period clamped");
  refreshLabels();
  emit updated();
}

// ---- Loading -------------------------------------------------------------------------------

void ModeViewArb::loadWaveformPressed(int row) {
  const int value = loadCombo->itemData(row).toInt();
  loadCombo->setCurrentIndex(0);
  const LoadRow* load = findLoadRow(loadRows, value);
  if (!load) return;
  if (getArbInfo().loaded) {
    showWarning(this, "Error", "File already loaded into software.");
    return;
  }
  const QString path = openFileName(load->title, load->filter, this);
  if (path.isEmpty()) return;
  switch (value) {
    case 1: loadCsv(path); break;
    case 2: loadBin16(path); break;
    case 3: loadBin32(path); break;
    case 4: loadMidas(path); break;
    case 7: loadWav(path); break;
    case 8: loadSequence(path); break;
    case 9: loadSigmf(path); break;
    default: break;
  }
}

bool ModeViewArb::takeAll(IQFileReader& reader, const QString& path, Sequence sequence) {
  if (reader.sampleCount() <= 0) return false;
  takeWaveform(QFileInfo(path).fileName(), readAllSamples(reader, maxPeriod), sequence);
  return true;
}

void ModeViewArb::loadBin16(const QString& path) {
  BinaryFile16sc reader;
  if (reader.open(path)) takeAll(reader, path, Sequence::Kept);
}

void ModeViewArb::loadBin32(const QString& path) {
  BinaryFile32fc reader;
  if (reader.open(path)) takeAll(reader, path, Sequence::Kept);
}

void ModeViewArb::loadWav(const QString& path) {
  WavReader reader;
  if (reader.open(path)) takeAll(reader, path, Sequence::Cleared);
}

void ModeViewArb::loadMidas(const QString& path) {
  MidasBlueFile file;
  if (file.open(path) != 0) {
    showWarning(this, "Error", "Unable to open Midas Blue file");
    return;
  }
  const double rate = file.sampleRate();
  if (!(rate >= minSampleRate && rate <= maxSampleRate)) {
    showWarning(this, "Error", "Invalid sample rate");
    return;
  }
  const int64_t count = std::min<int64_t>(file.sampleCount(), maxPeriod);
  if (count <= 0) {
    showWarning(this, "Error", "Invalid sample count");
    return;
  }
  std::vector<Sample> samples(static_cast<size_t>(count));
  file.read(samples.data(), 0, count);  // a kind it can't read leaves zeros
  {
    const std::lock_guard<std::mutex> hold(lock);
    info.sampleRate = rate;
  }
  takeWaveform(QFileInfo(path).fileName(), std::move(samples), Sequence::Kept);
}

void ModeViewArb::loadSigmf(const QString& path) {
  SigMFReader reader;
  if (!reader.open(path)) {
    showWarning(this, "Error", reader.errorText());
    return;
  }
  if (takeAll(reader, path, Sequence::Cleared) && reader.sampleRate() > 0.0)
    setSampleRate(reader.sampleRate());
}

void ModeViewArb::loadCsv(const QString& path) {
  CSVFileReader reader;
  const bool read = reader.open(path);
  if (!read && reader.errorText().isEmpty()) return;  // the file didn't open: nothing changes
  std::vector<Sample> samples = reader.data();
  takeWaveform(QFileInfo(path).fileName(), std::move(samples), Sequence::Cleared,
               reader.errorText());
}

void ModeViewArb::loadSamples(std::vector<Sample> samples) {
  takeWaveform("Custom", std::move(samples), Sequence::Kept);
}

void ModeViewArb::loadSequence(const QString& path) {
  auto sequence = std::make_shared<ArbSequence>();
  const bool read = loadSequenceFile(*sequence, path, this);
  {
    const std::lock_guard<std::mutex> hold(lock);
    clearInfo();
    if (read) {
      const int count =
          static_cast<int>(std::clamp<int64_t>(sequence->totalSamples(), INT_MIN, INT_MAX));
      info.sequence = std::move(sequence);
      info.name = QFileInfo(path).fileName();
      info.loaded = true;
      info.fileLength = info.period = info.samplesToUse = count;
    }
  }
  refreshLabels();
  emit updated();
}

void ModeViewArb::takeWaveform(const QString& name, std::vector<Sample> samples, Sequence sequence,
                               const QString& error) {
  {
    const std::lock_guard<std::mutex> hold(lock);
    if (sequence == Sequence::Cleared) info.sequence.reset();
    const int count = static_cast<int>(std::min<size_t>(samples.size(), maxPeriod));
    samples.resize(static_cast<size_t>(count));
    info.samples = std::make_shared<const std::vector<Sample>>(std::move(samples));
    info.name = name;
    info.loaded = true;
    info.fileLength = info.period = info.samplesToUse = count;
    info.sampleOffset = 0;
    info.parseError = error;
  }
  refreshLabels();
  emit updated();
}

void ModeViewArb::unloadFileButtonPressed() { unloadFile(); }

void ModeViewArb::clearInfo() {
  const double rate = info.sampleRate;  // the rate is a setting, not part of the waveform
  info = ArbInfo();
  info.sampleRate = rate;
}

void ModeViewArb::unloadFile() {
  {
    const std::lock_guard<std::mutex> hold(lock);
    clearInfo();
  }
  refreshLabels();
  emit updated();
}

void ModeViewArb::saveConfigPressed() {
  const ArbInfo arb = getArbInfo();
  if (!arb.loaded) {
    showWarning(this, "File Not Loaded",
                "Unable to save configuration. No waveform is currently loaded.");
    return;
  }
  const QString path = saveFileName("Arb File", "Arb Files (*.csv *.txt)", this);
  if (!path.isEmpty() && arb.samples)
    writeArbConfig(path, arb.sampleRate, arb.period, *arb.samples);
}

// ---- Labels and presets --------------------------------------------------------------------

void ModeViewArb::refreshLabels() {
  const ArbInfo arb = [this] {
    const std::lock_guard<std::mutex> hold(lock);
    ArbInfo copy = info;
    copy.samples.reset();  // the labels need only the counts
    return copy;
  }();
  referenceScaleEdit->setEnabled(!autoScaling());
  const bool sequence = arb.sequence && !arb.sequence->empty();
  periodEdit->setEnabled(!sequence);
  offsetEdit->setEnabled(!sequence);
  samplesToUseEdit->setEnabled(!sequence);
  sampleRateEdit->setValue(arb.sampleRate);
  periodEdit->setValue(arb.period);
  offsetEdit->setValue(arb.sampleOffset);
  samplesToUseEdit->setValue(arb.samplesToUse);
  fileNameLabel->setText(arb.loaded ? arb.name : "N/A");
  fileSamplesLabel->setText(arb.loaded ? QString("%L1").arg(arb.fileLength) : QString());
  if (sequence) {
    const QString length = formatTime(arb.sequence->duration(arb.sampleRate));
    signalLengthLabel->setText(length);
    periodLengthLabel->setText(length);
    return;
  }
  signalLengthLabel->setText(arb.loaded ? formatTime(arb.samplesToUse / arb.sampleRate) : "");
  periodLengthLabel->setText(arb.loaded ? formatTime(arb.period / arb.sampleRate) : "");
}

void ModeViewArb::setDefaults() {
  triggerCombo->selectValue(TriggerContinuous);
  setSampleRate(5e7);
  setAutoScaling(true);
  setReferenceScale(100.0);
  setOutputSignalAverage(true);
}

void ModeViewArb::saveSettings(QSettings* settings) {
  settings->beginGroup("ARB");
  settings->setValue("TriggerType", triggerMode());
  const ArbInfo arb = getArbInfo();
  settings->setValue("SampleRate", arb.sampleRate);
  settings->setValue("Period", arb.period);
  settings->endGroup();
}

void ModeViewArb::loadSettings(QSettings* settings) {
  settings->beginGroup("ARB");
  triggerModeIndexChanged(settings->value("TriggerType", triggerMode()).toInt());
  setSampleRate(settings->value("SampleRate", getArbInfo().sampleRate).toDouble());
  setPeriod(settings->value("Period", getArbInfo().period).toInt());
  settings->endGroup();
}
