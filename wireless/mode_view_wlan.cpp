// SPDX-License-Identifier: MIT
// Base of the three WLAN views: the rows they share, their slots and their common preset keys.
#include "wireless/mode_view_wlan.h"

#include "digital/bit_sources.h"
#include "digital/symbol_editor_dialog.h"
#include "modes/mode_types.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <algorithm>

namespace {

struct Item {
  int value;
  const char* text;
};

const Item dataItems[] = {{7, "PN7"}, {9, "PN9"}, {15, "PN15"}, {21, "PN21"}, {-1, "Custom"}};

constexpr double defaultSampleRate = 20e6;
constexpr int defaultScramblerInit = 93;
constexpr int defaultDataSource = 7;
constexpr int defaultDataLength = 64;          // bytes
constexpr double defaultIdleInterval = 0.001;  // s
const char* const defaultCustomData = "0000";

}  // namespace

ModeViewWLAN::ModeViewWLAN(const QString& name, int modeIndex, const char* presetGroup,
                           int minBytes, int maxBytes, QWidget* parent)
    : ModeWidget(name, modeIndex, parent),
      triggerCombo(new MyComboBox(this)),
      modulationLabel(new QLabel(this)),
      encodingLabel(new QLabel(this)),
      sampleRateEdit(new FrequencyEdit(defaultSampleRate, this)),
      spacingEdit(new FrequencyEdit(defaultSampleRate / fftSize, this)),
      oversampleEdit(new IntLineEdit(this)),
      interleaveCheck(new QCheckBox(this)),
      scrambleCheck(new QCheckBox(this)),
      scramblerInitEdit(new IntLineEdit(this)),
      windowLengthEdit(new IntLineEdit(this)),
      dataCombo(new MyComboBox(this)),
      bytesEdit(new IntLineEdit(this)),
      durationLabel(new QLabel(this)),
      idleEdit(new TimeEdit(this)),
      presetGroup(presetGroup) {
  for (int value = 0; value < 2; ++value) triggerCombo->addItem(triggerTypeTexts[value], value);
  oversampleEdit->setValue(1);
  oversampleEdit->setEnabled(false);
  interleaveCheck->setChecked(true);
  scrambleCheck->setChecked(true);
  scramblerInitEdit->setValue(defaultScramblerInit);
  windowLengthEdit->setRange(0, maxWindowLength);
  windowLengthEdit->setValue(maxWindowLength);
  for (const Item& item : dataItems) dataCombo->addItem(item.text, item.value);
  bytesEdit->setRange(minBytes, maxBytes);
  bytesEdit->setValue(defaultDataLength);
  idleEdit->setRange(0.0, maxIdleInterval);
  idleEdit->setValue(defaultIdleInterval);
  connectControls();
}

void ModeViewWLAN::addLeadingRows() {
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
}

void ModeViewWLAN::addTrailingRows() {
  auto* customButton = new QPushButton("Custom Data", this);
  formLayout->addRow("Sample Rate", sampleRateEdit);
  formLayout->addRow("Subcarrier Spacing", spacingEdit);
  formLayout->addRow("Oversample Amount", oversampleEdit);
  formLayout->addRow("Interleave Bits", interleaveCheck);
  formLayout->addRow("Scramble Bits", scrambleCheck);
  formLayout->addRow("Scrambler Initialization", scramblerInitEdit);
  formLayout->addRow("Window Length (samples)", windowLengthEdit);
  formLayout->addRow("Data", dataCombo);
  formLayout->addRow("Bytes", bytesEdit);
  formLayout->addRow(new QLabel(this), customButton);
  formLayout->addRow("Signal Duration", durationLabel);  // nothing writes it
  formLayout->addRow("Idle Interval", idleEdit);
  connect(customButton, &QPushButton::clicked, this, &ModeViewWLAN::defineCustomSequence);
}

void ModeViewWLAN::connectControls() {
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(triggerCombo, indexChanged, this, &ModeViewWLAN::updated);
  connect(sampleRateEdit, &FrequencyEdit::valueChanged, this, &ModeViewWLAN::setSampleRate);
  connect(spacingEdit, &FrequencyEdit::valueChanged, this, &ModeViewWLAN::setSubcarrierSpacing);
  connect(interleaveCheck, &QCheckBox::toggled, this, [this](bool on) {
    interleaved_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(scrambleCheck, &QCheckBox::toggled, this, [this](bool on) {
    scrambled_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(scramblerInitEdit, &IntLineEdit::valueChanged, this, &ModeViewWLAN::updated);
  connect(windowLengthEdit, &IntLineEdit::valueChanged, this, &ModeViewWLAN::setWindowLength);
  connect(dataCombo, indexChanged, this, &ModeViewWLAN::updated);
  connect(bytesEdit, &IntLineEdit::valueChanged, this, [this](int bytes) { setDataLength(bytes); });
  connect(idleEdit, &TimeEdit::valueChanged, this, &ModeViewWLAN::setIdleInterval);
}

// ---- Reading -------------------------------------------------------------------------------

int ModeViewWLAN::triggerMode() const { return triggerCombo->currentValue(); }
bool ModeViewWLAN::isSingle() const { return triggerMode() == TriggerSingle; }
double ModeViewWLAN::baseSampleRate() const { return sampleRateEdit->value(); }
double ModeViewWLAN::subcarrierSpacing() const { return spacingEdit->value(); }
int ModeViewWLAN::oversample() const { return oversampleEdit->value(); }
double ModeViewWLAN::oversampledRate() const { return oversample() * baseSampleRate(); }
double ModeViewWLAN::sampleRate() const { return oversampledRate(); }
bool ModeViewWLAN::interleaved() const { return interleaved_.load(std::memory_order_relaxed); }
bool ModeViewWLAN::scrambled() const { return scrambled_.load(std::memory_order_relaxed); }
int ModeViewWLAN::scramblerInit() const { return scramblerInitEdit->value(); }
int ModeViewWLAN::windowLength() const { return windowLengthEdit->value(); }
int ModeViewWLAN::dataSource() const { return dataCombo->currentValue(); }
int ModeViewWLAN::dataLength() const { return bytesEdit->value(); }
double ModeViewWLAN::idleInterval() const { return idleEdit->value(); }
QString ModeViewWLAN::modulationText() const { return modulationLabel->text(); }
QString ModeViewWLAN::encodingText() const { return encodingLabel->text(); }

QString ModeViewWLAN::customData() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customData_;
}

BitVector ModeViewWLAN::sourceBits() const {
  const int source = dataSource();
  return source == -1 ? bitsFromText(customData()) : generatePnBits(source, pnSeed);
}

// ---- Setters -------------------------------------------------------------------------------
// A control whose state moves reports the change itself; one that stays is reported here, so
// each call restarts the output once.

void ModeViewWLAN::selectOrReport(MyComboBox* combo, int value) {
  if (!combo->selectValue(value)) emit updated();
}

void ModeViewWLAN::setTriggerMode(int mode) { selectOrReport(triggerCombo, mode); }

void ModeViewWLAN::setInterleaved(bool on) {
  if (interleaveCheck->isChecked() == on) emit updated();
  interleaveCheck->setChecked(on);
}

void ModeViewWLAN::setScrambled(bool on) {
  if (scrambleCheck->isChecked() == on) emit updated();
  scrambleCheck->setChecked(on);
}

void ModeViewWLAN::setScramblerInit(int value) {
  scramblerInitEdit->setValue(value);
  emit updated();
}

void ModeViewWLAN::setData(int source) { selectOrReport(dataCombo, source); }

// The edit's validator bounds typing only, and a preset's value stands.
void ModeViewWLAN::setDataLength(int bytes) {
  bytesEdit->setValue(bytes);
  emit updated();
}

void ModeViewWLAN::setCustomData(const QString& pattern) {
  const std::lock_guard<std::mutex> hold(customLock);
  customData_ = pattern;
}

// ---- Slots ---------------------------------------------------------------------------------

void ModeViewWLAN::setSampleRate(double rate) {
  const double kept = clampOr(rate, minSampleRate, maxSampleRate, baseSampleRate());
  sampleRateEdit->setValue(kept);
  spacingEdit->setValue(kept / fftSize);
  emit updated();
}

void ModeViewWLAN::setSubcarrierSpacing(double spacing) {
  const double kept =
      clampOr(spacing, minSubcarrierSpacing, maxSubcarrierSpacing, subcarrierSpacing());
  spacingEdit->setValue(kept);
  sampleRateEdit->setValue(kept * fftSize);
  emit updated();
}

void ModeViewWLAN::setWindowLength(int length) {
  windowLengthEdit->setValue(std::clamp(length, 0, maxWindowLength));
  emit updated();
}

void ModeViewWLAN::setIdleInterval(double seconds) {
  idleEdit->setValue(clampOr(seconds, 0.0, maxIdleInterval, idleInterval()));
  emit updated();
}

void ModeViewWLAN::updateStrings() {
  const RateParams& rate = labelRate();
  modulationLabel->setText(modulationName(rate.modulation));
  encodingLabel->setText(codeRateName(rate.codeRate));
  emit updated();
}

int ModeViewWLAN::runDialog(QDialog& dialog) { return dialog.exec(); }

// Every entry of "Data" stands above -2, so an accepted pattern always restarts the output.
void ModeViewWLAN::defineCustomSequence() {
  SymbolEditorDialog dialog(this);
  dialog.setText(customData());
  if (runDialog(dialog) != QDialog::Accepted) return;
  setCustomData(dialog.text());
  if (dataSource() > -2) emit updated();
}

// ---- Presets -------------------------------------------------------------------------------

void ModeViewWLAN::setDefaults() {
  setTriggerMode(TriggerContinuous);
  setRateDefaults();
  setSampleRate(defaultSampleRate);
  setInterleaved(true);
  setScrambled(true);
  setScramblerInit(defaultScramblerInit);
  setSignalDefaults();
  setWindowLength(maxWindowLength);
  setData(defaultDataSource);
  setDataLength(defaultDataLength);
  setIdleInterval(defaultIdleInterval);
  setCustomData(defaultCustomData);
  updateStrings();
}

void ModeViewWLAN::saveSettings(QSettings* settings) {
  settings->beginGroup(presetGroup);
  settings->setValue("TriggerMode", triggerMode());
  saveRateKeys(settings);
  settings->setValue("SampleRate", baseSampleRate());
  settings->setValue("Interleaved", interleaved());
  settings->setValue("Scrambled", scrambled());
  settings->setValue("ScramblerInit", scramblerInit());
  saveSignalKeys(settings);
  settings->setValue("WindowLength", windowLength());
  settings->setValue("Data", dataSource());
  settings->setValue("DataLength", dataLength());
  settings->setValue("CustomData", customData());
  settings->setValue("IdleInterval", idleInterval());
  settings->endGroup();
}

// Each key defaults to the control's value; combo keys that name no entry keep the selection.
// The sample rate, the window and the idle interval are limited on the way in, and whatever a
// mode limits in its own setters.
void ModeViewWLAN::loadSettings(QSettings* settings) {
  settings->beginGroup(presetGroup);
  setTriggerMode(settings->value("TriggerMode", triggerMode()).toInt());
  loadRateKeys(settings);
  setSampleRate(settings->value("SampleRate", baseSampleRate()).toDouble());
  setInterleaved(settings->value("Interleaved", interleaved()).toBool());
  setScrambled(settings->value("Scrambled", scrambled()).toBool());
  setScramblerInit(settings->value("ScramblerInit", scramblerInit()).toInt());
  loadSignalKeys(settings);
  setWindowLength(settings->value("WindowLength", windowLength()).toInt());
  setData(settings->value("Data", dataSource()).toInt());
  setDataLength(settings->value("DataLength", dataLength()).toInt());
  setCustomData(settings->value("CustomData", customData()).toString());
  setIdleInterval(settings->value("IdleInterval", idleInterval()).toDouble());
  settings->endGroup();
  emit updated();
}
