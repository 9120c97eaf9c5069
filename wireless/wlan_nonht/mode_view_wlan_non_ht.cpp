// SPDX-License-Identifier: MIT
// The IEEE 802.11a view (mode 11): rate, OFDM numerology, coding switches and the PSDU source.
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"

#include "digital/bit_sources.h"
#include "digital/symbol_editor_dialog.h"
#include "modes/mode_types.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"
#include "wireless/rate_params.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

struct Item {
  int value;
  const char* text;
};

const Item dataItems[] = {{7, "PN7"}, {9, "PN9"}, {15, "PN15"}, {21, "PN21"}, {-1, "Custom"}};

constexpr int defaultRateCode = 12;  // "54 Mb/s"
constexpr double defaultSampleRate = 20e6;
constexpr int defaultScramblerInit = 93;
constexpr int defaultDataLength = 64;  // bytes
constexpr int maxDataLength = 4095;
constexpr double defaultIdleInterval = 0.001;  // s
const char* const defaultCustomData = "0000";

}  // namespace

ModeViewWLANNonHT::ModeViewWLANNonHT(QWidget* parent)
    : ModeWidget("IEEE 802.11a", 11, parent),
      triggerCombo(new MyComboBox(this)),
      rateCombo(new MyComboBox(this)),
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
      idleEdit(new TimeEdit(this)) {
  for (int value = 0; value < 2; ++value) triggerCombo->addItem(triggerTypeTexts[value], value);
  for (int i = 0; i < nonHtRateCount; ++i)
    rateCombo->addItem(nonHtRateRow(i).label, nonHtRateRow(i).rateCode);
  rateCombo->selectValue(defaultRateCode);
  oversampleEdit->setValue(1);
  oversampleEdit->setEnabled(false);
  interleaveCheck->setChecked(true);
  scrambleCheck->setChecked(true);
  scramblerInitEdit->setValue(defaultScramblerInit);
  windowLengthEdit->setRange(0, maxWindowLength);
  windowLengthEdit->setValue(maxWindowLength);
  for (const Item& item : dataItems) dataCombo->addItem(item.text, item.value);
  bytesEdit->setRange(1, maxDataLength);
  bytesEdit->setValue(defaultDataLength);
  idleEdit->setRange(0.0, maxIdleInterval);
  idleEdit->setValue(defaultIdleInterval);
  addControls();
  connectControls();
  updateStrings();
}

void ModeViewWLANNonHT::addControls() {
  auto* customButton = new QPushButton("Custom Data", this);
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Rate Select", rateCombo);
  formLayout->addRow("Modulation Type", modulationLabel);
  formLayout->addRow("Encoding", encodingLabel);
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
  connect(customButton, &QPushButton::clicked, this, &ModeViewWLANNonHT::defineCustomSequence);
}

void ModeViewWLANNonHT::connectControls() {
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(triggerCombo, indexChanged, this, &ModeViewWLANNonHT::updated);
  connect(rateCombo, indexChanged, this, &ModeViewWLANNonHT::updateStrings);
  connect(sampleRateEdit, &FrequencyEdit::valueChanged, this, &ModeViewWLANNonHT::setSampleRate);
  connect(spacingEdit, &FrequencyEdit::valueChanged, this,
          &ModeViewWLANNonHT::setSubcarrierSpacing);
  connect(interleaveCheck, &QCheckBox::toggled, this, [this](bool on) {
    interleaved_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(scrambleCheck, &QCheckBox::toggled, this, [this](bool on) {
    scrambled_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(scramblerInitEdit, &IntLineEdit::valueChanged, this, &ModeViewWLANNonHT::updated);
  connect(windowLengthEdit, &IntLineEdit::valueChanged, this,
          &ModeViewWLANNonHT::setWindowLength);
  connect(dataCombo, indexChanged, this, &ModeViewWLANNonHT::updated);
  connect(bytesEdit, &IntLineEdit::valueChanged, this, &ModeViewWLANNonHT::updated);
  connect(idleEdit, &TimeEdit::valueChanged, this, &ModeViewWLANNonHT::setIdleInterval);
}

// ---- Reading -------------------------------------------------------------------------------

int ModeViewWLANNonHT::triggerMode() const { return triggerCombo->currentValue(); }
bool ModeViewWLANNonHT::isSingle() const { return triggerMode() == TriggerSingle; }
int ModeViewWLANNonHT::rateCode() const { return rateCombo->currentValue(); }
double ModeViewWLANNonHT::baseSampleRate() const { return sampleRateEdit->value(); }
double ModeViewWLANNonHT::subcarrierSpacing() const { return spacingEdit->value(); }
int ModeViewWLANNonHT::oversample() const { return oversampleEdit->value(); }
double ModeViewWLANNonHT::sampleRate() const { return oversample() * baseSampleRate(); }
bool ModeViewWLANNonHT::interleaved() const {
  return interleaved_.load(std::memory_order_relaxed);
}
bool ModeViewWLANNonHT::scrambled() const { return scrambled_.load(std::memory_order_relaxed); }
int ModeViewWLANNonHT::scramblerInit() const { return scramblerInitEdit->value(); }
int ModeViewWLANNonHT::windowLength() const { return windowLengthEdit->value(); }
int ModeViewWLANNonHT::dataSource() const { return dataCombo->currentValue(); }
int ModeViewWLANNonHT::dataLength() const { return bytesEdit->value(); }
double ModeViewWLANNonHT::idleInterval() const { return idleEdit->value(); }
QString ModeViewWLANNonHT::modulationText() const { return modulationLabel->text(); }
QString ModeViewWLANNonHT::encodingText() const { return encodingLabel->text(); }

QString ModeViewWLANNonHT::customData() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customData_;
}

NonHtSettings ModeViewWLANNonHT::settings() const {
  NonHtSettings s;
  s.frame.rateCode = rateCode();
  s.frame.rate = nonHtRate(s.frame.rateCode);
  s.frame.interleaved = interleaved();
  s.frame.scrambled = scrambled();
  s.frame.scramblerInit = static_cast<uint8_t>(scramblerInit() & 0xff);
  s.frame.windowLength = windowLength();
  const int source = dataSource();
  s.sourceBits = source == -1 ? bitsFromText(customData()) : generatePnBits(source, pnSeed);
  s.bytes = dataLength();
  s.idleSeconds = idleInterval();
  s.sampleRate = sampleRate();
  return s;
}

// "Bytes" from a preset is not limited; a PSDU whose frame the channel filter and the submit
// path could not index (an int of samples) is not built, rather than exhausting memory.
ComplexVector ModeViewWLANNonHT::generateFrame() const {
  const NonHtSettings s = settings();
  const double dataBits = s.frame.rate.dataBitsPerSymbol;
  const double symbols = std::ceil((8.0 * std::max(s.bytes, 0) + 22.0) / dataBits);
  if (!(400.0 + 80.0 * symbols <= INT_MAX)) return {};
  return buildNonHtSamples(s);
}

// ---- Setters -------------------------------------------------------------------------------
// A control whose state moves reports the change itself; one that stays is reported here, so
// each call restarts the output once.

void ModeViewWLANNonHT::setTriggerMode(int mode) {
  if (!triggerCombo->selectValue(mode)) emit updated();
}

void ModeViewWLANNonHT::setRate(int code) {
  if (!rateCombo->selectValue(code)) emit updated();
}

void ModeViewWLANNonHT::setInterleaved(bool on) {
  if (interleaveCheck->isChecked() == on) emit updated();
  interleaveCheck->setChecked(on);
}

void ModeViewWLANNonHT::setScrambled(bool on) {
  if (scrambleCheck->isChecked() == on) emit updated();
  scrambleCheck->setChecked(on);
}

void ModeViewWLANNonHT::setScramblerInit(int value) {
  scramblerInitEdit->setValue(value);
  emit updated();
}

void ModeViewWLANNonHT::setData(int source) {
  if (!dataCombo->selectValue(source)) emit updated();
}

// Not limited: the edit's validator bounds typing only, and a preset's value stands.
void ModeViewWLANNonHT::setDataLength(int bytes) {
  bytesEdit->setValue(bytes);
  emit updated();
}

void ModeViewWLANNonHT::setCustomData(const QString& pattern) {
  const std::lock_guard<std::mutex> hold(customLock);
  customData_ = pattern;
}

// ---- Slots ---------------------------------------------------------------------------------

void ModeViewWLANNonHT::setSampleRate(double rate) {
  const double kept = clampOr(rate, minSampleRate, maxSampleRate, baseSampleRate());
  sampleRateEdit->setValue(kept);
  spacingEdit->setValue(kept / fftSize);
  emit updated();
}

void ModeViewWLANNonHT::setSubcarrierSpacing(double spacing) {
  const double kept =
      clampOr(spacing, minSubcarrierSpacing, maxSubcarrierSpacing, subcarrierSpacing());
  spacingEdit->setValue(kept);
  sampleRateEdit->setValue(kept * fftSize);
  emit updated();
}

void ModeViewWLANNonHT::setWindowLength(int length) {
  windowLengthEdit->setValue(std::clamp(length, 0, maxWindowLength));
  emit updated();
}

void ModeViewWLANNonHT::setIdleInterval(double seconds) {
  idleEdit->setValue(clampOr(seconds, 0.0, maxIdleInterval, idleInterval()));
  emit updated();
}

void ModeViewWLANNonHT::updateStrings() {
  const RateParams& rate = nonHtRate(rateCode());
  modulationLabel->setText(modulationName(rate.modulation));
  encodingLabel->setText(codeRateName(rate.codeRate));
  emit updated();
}

int ModeViewWLANNonHT::runDialog(QDialog& dialog) { return dialog.exec(); }

// Every entry of "Data" stands above -2, so an accepted pattern always restarts the output.
void ModeViewWLANNonHT::defineCustomSequence() {
  SymbolEditorDialog dialog(this);
  dialog.setText(customData());
  if (runDialog(dialog) != QDialog::Accepted) return;
  setCustomData(dialog.text());
  if (dataSource() > -2) emit updated();
}

// ---- Presets -------------------------------------------------------------------------------

void ModeViewWLANNonHT::setDefaults() {
  setTriggerMode(TriggerContinuous);
  setRate(defaultRateCode);
  setSampleRate(defaultSampleRate);
  setInterleaved(true);
  setScrambled(true);
  setScramblerInit(defaultScramblerInit);
  setWindowLength(maxWindowLength);
  setData(7);
  setDataLength(defaultDataLength);
  setIdleInterval(defaultIdleInterval);
  setCustomData(defaultCustomData);
  updateStrings();
}

void ModeViewWLANNonHT::saveSettings(QSettings* settings) {
  settings->beginGroup("WLAN_NonHT");
  settings->setValue("TriggerMode", triggerMode());
  settings->setValue("Rate", rateCode());
  settings->setValue("SampleRate", baseSampleRate());
  settings->setValue("Interleaved", interleaved());
  settings->setValue("Scrambled", scrambled());
  settings->setValue("ScramblerInit", scramblerInit());
  settings->setValue("WindowLength", windowLength());
  settings->setValue("Data", dataSource());
  settings->setValue("DataLength", dataLength());
  settings->setValue("CustomData", customData());
  settings->setValue("IdleInterval", idleInterval());
  settings->endGroup();
}

// Each key defaults to the control's value; combo keys that name no entry keep the selection.
// Only the sample rate, the window and the idle interval are limited on the way in.
void ModeViewWLANNonHT::loadSettings(QSettings* settings) {
  settings->beginGroup("WLAN_NonHT");
  setTriggerMode(settings->value("TriggerMode", triggerMode()).toInt());
  setRate(settings->value("Rate", rateCode()).toInt());
  setSampleRate(settings->value("SampleRate", baseSampleRate()).toDouble());
  setInterleaved(settings->value("Interleaved", interleaved()).toBool());
  setScrambled(settings->value("Scrambled", scrambled()).toBool());
  setScramblerInit(settings->value("ScramblerInit", scramblerInit()).toInt());
  setWindowLength(settings->value("WindowLength", windowLength()).toInt());
  setData(settings->value("Data", dataSource()).toInt());
  setDataLength(settings->value("DataLength", dataLength()).toInt());
  setCustomData(settings->value("CustomData", customData()).toString());
  setIdleInterval(settings->value("IdleInterval", idleInterval()).toDouble());
  settings->endGroup();
  emit updated();
}
