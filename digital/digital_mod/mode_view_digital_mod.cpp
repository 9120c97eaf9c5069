// SPDX-License-Identifier: MIT
// The digital modulation view (mode 8): symbol rate, constellation, pulse shaping, bit source.
#include "digital/digital_mod/mode_view_digital_mod.h"

#include "digital/custom_iq_dialog.h"
#include "digital/filter_designs.h"
#include "digital/pulse_shaping_filter_editor_dialog.h"
#include "digital/symbol_editor_dialog.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

namespace {

struct Item {
  int value;
  const char* text;
};

const Item filterItems[] = {{FilterRectangular, "Rectangular"},
                            {FilterRaisedCosine, "Raised Cosine"},
                            {FilterRootRaisedCosine, "Root Raised Cosine"},
                            {FilterGaussian, "Gaussian"},
                            {FilterHalfSine, "Half-Sine"},
                            {FilterCustom, "Custom"}};

const Item sequenceItems[] = {{7, "PN7"}, {9, "PN9"}, {15, "PN15"}, {21, "PN21"}, {-1, "Custom"}};

template <size_t N>
void addItems(MyComboBox* combo, const Item (&items)[N]) {
  for (const Item& item : items) combo->addItem(item.text, item.value);
}

int validOversample(int os) { return os == 2 || os == 4 || os == 8 ? os : 4; }

std::vector<float> defaultCustomTaps() {
  std::vector<float> taps(33);
  designRootRaisedCosine(taps.data(), 33, 0.35, 4);
  return taps;
}

// The key's number, or `current` when the key holds no number.
double numberOr(const QSettings& settings, const QString& key, double current) {
  bool ok = false;
  const double value = settings.value(key, current).toDouble(&ok);
  return ok ? value : current;
}

}  // namespace

ModeViewDigitalMod::ModeViewDigitalMod(QWidget* parent)
    : ModeWidget("Digital Mod", 8, parent),
      triggerCombo(new MyComboBox(this)),
      offDurationEdit(new TimeEdit(this)),
      symbolRateEdit(new FrequencyEdit(1e6, this)),
      modulationCombo(new MyComboBox(this)),
      filterCombo(new MyComboBox(this)),
      alphaEdit(new DoubleEdit(0.0, 1.0, 4, 0.35, this)),
      filterLengthEdit(new IntLineEdit(this)),
      sequenceCombo(new MyComboBox(this)),
      seedEdit(new IntLineEdit(this)),
      deviationEdit(new FrequencyEdit(1e5, this)),
      iqScalingEdit(new DoubleEdit(0.0, 1.0, 3, 1.0, this)),
      oversampleEdit(new IntLineEdit(this)),
      customModulation_(defaultModulationMap(DigitalModQPSK)) {
  for (int value = 0; value < 2; ++value) triggerCombo->addItem(triggerTypeTexts[value], value);
  offDurationEdit->setRange(0.0, maxOffDuration);
  offDurationEdit->setValue(0.0);
  for (int mod = DigitalModBPSK; mod <= DigitalModCustom; ++mod)
    if (const char* text = digitalModText(mod)) modulationCombo->addItem(text, mod);
  addItems(filterCombo, filterItems);
  filterLengthEdit->setValue(8);
  filterLengthEdit->setStep(true, 1);
  addItems(sequenceCombo, sequenceItems);
  sequenceCombo->selectValue(15);
  iqScalingEdit->setEnabled(false);  // only the remote interface moves it
  oversampleEdit->setValue(4);
  addControls();
  connectControls();
}

void ModeViewDigitalMod::addControls() {
  auto* defineModulation = new QPushButton("Define Modulation", this);
  auto* defineFilter = new QPushButton("Define Filter", this);
  auto* defineSequence = new QPushButton("Define Sequence", this);
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Samples Off", offDurationEdit);
  formLayout->addRow(new QLabel(this));
  formLayout->addRow("Symbol Rate", symbolRateEdit);
  formLayout->addRow("Modulation Type", modulationCombo);
  formLayout->addRow(new QLabel(this), defineModulation);
  formLayout->addRow("Filter Type", filterCombo);
  formLayout->addRow("Filter Alpha", alphaEdit);
  formLayout->addRow("Filter Length (symbols)", filterLengthEdit);
  formLayout->addRow(new QLabel(this), defineFilter);
  formLayout->addRow("Sequence", sequenceCombo);
  formLayout->addRow("Sequence Seed", seedEdit);
  formLayout->addRow(new QLabel(this), defineSequence);
  formLayout->addRow("FSK Deviation", deviationEdit);
  formLayout->addRow("I/Q Scaling", iqScalingEdit);
  formLayout->addRow("Oversample", oversampleEdit);
  connect(defineModulation, &QPushButton::clicked, this,
          &ModeViewDigitalMod::defineCustomModulation);
  connect(defineFilter, &QPushButton::clicked, this, &ModeViewDigitalMod::defineCustomFilter);
  connect(defineSequence, &QPushButton::clicked, this, &ModeViewDigitalMod::defineCustomSequence);
}

void ModeViewDigitalMod::connectControls() {
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(triggerCombo, indexChanged, this, &ModeViewDigitalMod::setTriggerMode);
  connect(offDurationEdit, &TimeEdit::valueChanged, this, &ModeViewDigitalMod::setOffDuration);
  connect(symbolRateEdit, &FrequencyEdit::valueChanged, this, &ModeViewDigitalMod::setSymbolRate);
  connect(modulationCombo, indexChanged, this, &ModeViewDigitalMod::updated);
  connect(filterCombo, indexChanged, this, &ModeViewDigitalMod::updated);
  connect(alphaEdit, &DoubleEdit::editUpdated, this, &ModeViewDigitalMod::setFilterAlpha);
  connect(filterLengthEdit, &IntLineEdit::valueChanged, this, &ModeViewDigitalMod::setFilterLength);
  connect(sequenceCombo, indexChanged, this, &ModeViewDigitalMod::updated);
  connect(seedEdit, &IntLineEdit::valueChanged, this, &ModeViewDigitalMod::setSequenceSeed);
  connect(deviationEdit, &FrequencyEdit::valueChanged, this, &ModeViewDigitalMod::setFskDeviation);
  connect(iqScalingEdit, &DoubleEdit::editUpdated, this, &ModeViewDigitalMod::setIQScaling);
  connect(oversampleEdit, &IntLineEdit::valueChanged, this, &ModeViewDigitalMod::setOversample);
}

// ---- Reading -------------------------------------------------------------------------------

int ModeViewDigitalMod::triggerMode() const { return triggerCombo->currentValue(); }
double ModeViewDigitalMod::offDuration() const { return offDurationEdit->value(); }
double ModeViewDigitalMod::symbolRate() const { return symbolRateEdit->value(); }
int ModeViewDigitalMod::modulationType() const { return modulationCombo->currentValue(); }
int ModeViewDigitalMod::filterType() const { return filterCombo->currentValue(); }
double ModeViewDigitalMod::filterAlpha() const { return alphaEdit->value(); }
int ModeViewDigitalMod::filterLength() const { return filterLengthEdit->value(); }
int ModeViewDigitalMod::sequence() const { return sequenceCombo->currentValue(); }
int ModeViewDigitalMod::sequenceSeed() const { return seedEdit->value(); }
double ModeViewDigitalMod::fskDeviation() const { return deviationEdit->value(); }
double ModeViewDigitalMod::iqScaling() const { return iqScalingEdit->value(); }
int ModeViewDigitalMod::oversample() const { return oversampleEdit->value(); }

ModulationMap ModeViewDigitalMod::customModulation() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customModulation_;
}

std::vector<float> ModeViewDigitalMod::customFilterTaps() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customFilterTaps_;
}

QString ModeViewDigitalMod::customBitString() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customBitString_;
}

ModulationMap ModeViewDigitalMod::modulationMap() const {
  const int mod = modulationType();
  return mod == DigitalModCustom ? customModulation() : defaultModulationMap(mod);
}

std::vector<float> ModeViewDigitalMod::pulseShapingTaps() const {
  PulseShapingSettings s;
  s.filterType = filterType();
  s.alpha = filterAlpha();
  s.filterLength = filterLength();
  s.oversample = oversample();
  if (s.filterType == FilterCustom) s.customTaps = customFilterTaps();
  return ::pulseShapingTaps(s);
}

LinearModSettings ModeViewDigitalMod::linearSettings() const {
  LinearModSettings s;
  s.map = modulationMap();
  s.taps = pulseShapingTaps();
  s.oversample = oversample();
  s.symbolRateHz = symbolRate();
  s.iqScaling = static_cast<float>(iqScaling());
  s.offDurationS = offDuration();
  s.bits = modulationBits(sequence(), sequenceSeed(), customBitString(), bitsPerSymbol(s.map));
  return s;
}

FskSettings ModeViewDigitalMod::fskSettings() const {
  FskSettings s;
  s.mod = modulationType();
  s.taps = pulseShapingTaps();
  s.oversample = oversample();
  s.symbolRateHz = symbolRate();
  s.deviationHz = fskDeviation();
  s.offDurationS = offDuration();
  s.bits = modulationBits(sequence(), sequenceSeed(), customBitString(), fskBitsPerSymbol(s.mod));
  return s;
}

void ModeViewDigitalMod::setCustomModulation(const ModulationMap& map) {
  const std::lock_guard<std::mutex> hold(customLock);
  customModulation_ = map;
}

void ModeViewDigitalMod::setCustomFilterTaps(const std::vector<float>& taps) {
  const std::lock_guard<std::mutex> hold(customLock);
  customFilterTaps_ = taps;
}

void ModeViewDigitalMod::setCustomBitString(const QString& bits) {
  const std::lock_guard<std::mutex> hold(customLock);
  customBitString_ = bits;
}

// ---- Slots ---------------------------------------------------------------------------------
// A combo box whose selection moves reports the change itself; one that stays (the value is
// already selected, or has no item) is reported here. So each call restarts the output once.

void ModeViewDigitalMod::setTriggerMode(int newTriggerMode) {
  if (!triggerCombo->selectValue(newTriggerMode)) emit updated();
}

void ModeViewDigitalMod::setOffDuration(double newOffDuration) {
  offDurationEdit->setValue(newOffDuration);  // the edit keeps its limits
  emit updated();
}

void ModeViewDigitalMod::setSymbolRate(double newSymbolRate) {
  const double os = oversample();
  symbolRateEdit->setValue(
      clampOr(newSymbolRate, minSampleRate / os, maxSampleRate / os, symbolRate()));
  emit updated();
}

void ModeViewDigitalMod::setFilterAlpha(double newAlpha) {
  alphaEdit->setValue(clampOr(newAlpha, minAlpha, maxAlpha, filterAlpha()));
  emit updated();
}

void ModeViewDigitalMod::setFilterLength(int newLength) {
  filterLengthEdit->setValue(std::clamp(newLength, minFilterLength, maxFilterLength));
  emit updated();
}

void ModeViewDigitalMod::setModulationType(DigitalMod newModType) {
  if (!modulationCombo->selectValue(newModType)) emit updated();
}

void ModeViewDigitalMod::setFilterType(FilterType newFilterType) {
  if (!filterCombo->selectValue(newFilterType)) emit updated();
}

void ModeViewDigitalMod::setData(int pn) {
  if (!sequenceCombo->selectValue(pn)) emit updated();
}

void ModeViewDigitalMod::setSequenceSeed(int newSeed) {
  seedEdit->setValue(seedMagnitude(newSeed));
  emit updated();
}

void ModeViewDigitalMod::setFskDeviation(double newDeviation) {
  deviationEdit->setValue(clampOr(newDeviation, minDeviation, maxDeviation, fskDeviation()));
  emit updated();
}

void ModeViewDigitalMod::setIQScaling(double scaling) {
  iqScalingEdit->setValue(clampOr(scaling, minIQScaling, maxIQScaling, iqScaling()));
  emit updated();
}

void ModeViewDigitalMod::setOversample(int newOversample) {
  oversampleEdit->setValue(validOversample(newOversample));
  setSymbolRate(symbolRate());
}

// ---- Define dialogs ------------------------------------------------------------------------

int ModeViewDigitalMod::runDialog(QDialog& dialog) { return dialog.exec(); }

void ModeViewDigitalMod::defineCustomModulation() {
  CustomIQDialog dialog(customModulation(), this);
  if (runDialog(dialog) != QDialog::Accepted) return;
  setCustomModulation(dialog.modulationMap());
  emit updated();
}

// A custom filter in force restarts the output even when the dialog was cancelled.
void ModeViewDigitalMod::defineCustomFilter() {
  PulseShapingFilterEditorDialog dialog(customFilterTaps(), oversample(), this);
  if (runDialog(dialog) == QDialog::Accepted) setCustomFilterTaps(dialog.taps());
  if (filterType() == FilterCustom) emit updated();
}

void ModeViewDigitalMod::defineCustomSequence() {
  SymbolEditorDialog dialog(this);
  dialog.setText(customBitString());
  if (runDialog(dialog) != QDialog::Accepted) return;
  setCustomBitString(dialog.text());
  if (sequence() == -1) emit updated();
}

// ---- Presets -------------------------------------------------------------------------------

// The FSK deviation, the I/Q scaling and the custom map stay as they are.
void ModeViewDigitalMod::setDefaults() {
  setTriggerMode(TriggerContinuous);
  setOffDuration(0.0);
  setSymbolRate(1e6);
  setModulationType(DigitalModQPSK);
  setFilterType(FilterRootRaisedCosine);
  setFilterAlpha(0.35);
  setFilterLength(8);
  setData(15);
  setSequenceSeed(23);
  setOversample(4);
  setCustomBitString("0000");
  setCustomFilterTaps(defaultCustomTaps());
  emit updated();  // the custom tables changed after the last control
}

void ModeViewDigitalMod::saveSettings(QSettings* settings) {
  settings->beginGroup("RadioCustom");
  settings->setValue("TriggerMode", triggerMode());
  settings->setValue("OffTime", offDuration());
  settings->setValue("SymbolRate", symbolRate());
  settings->setValue("ModulationType", modulationType());
  settings->setValue("FilterType", filterType());
  settings->setValue("FilterAlpha", filterAlpha());
  settings->setValue("FilterLength", filterLength());
  settings->setValue("Sequence", sequence());
  settings->setValue("SequenceSeed", sequenceSeed());
  settings->setValue("FskDeviation", fskDeviation());
  settings->setValue("Oversample", oversample());
  saveCustomModulation(settings);
  const std::vector<float> taps = customFilterTaps();
  settings->beginWriteArray("CustomFilter", static_cast<int>(taps.size()));
  for (int i = 0; i < static_cast<int>(taps.size()); ++i) {
    settings->setArrayIndex(i);
    settings->setValue("Tap", static_cast<double>(taps[i]));
  }
  settings->endArray();
  settings->setValue("CustomBitString", customBitString());
  settings->endGroup();
}

// The offsets are written even when the map isn't differential.
void ModeViewDigitalMod::saveCustomModulation(QSettings* settings) const {
  const ModulationMap map = customModulation();
  settings->beginGroup("CustomMod");
  settings->beginWriteArray("States", static_cast<int>(map.states.size()));
  for (int i = 0; i < static_cast<int>(map.states.size()); ++i) {
    settings->setArrayIndex(i);
    settings->setValue("Real", static_cast<double>(map.states[i].real()));
    settings->setValue("Imag", static_cast<double>(map.states[i].imag()));
  }
  settings->endArray();
  settings->setValue("DifferentialEncoding", map.differential);
  settings->beginWriteArray("DifferentialOffsets", static_cast<int>(map.diffStates.size()));
  for (int i = 0; i < static_cast<int>(map.diffStates.size()); ++i) {
    settings->setArrayIndex(i);
    settings->setValue("Offset", map.diffStates[i]);
  }
  settings->endArray();
  settings->setValue("OffsetQ", map.offsetQ);
  settings->endGroup();
}

// Each key defaults to the control's value. Combo boxes keep their item for an integer they
// don't hold; the symbol rate is limited by the oversample in force, and again once the
// oversample is read.
void ModeViewDigitalMod::loadSettings(QSettings* settings) {
  settings->beginGroup("RadioCustom");
  setTriggerMode(settings->value("TriggerMode", triggerMode()).toInt());
  setOffDuration(numberOr(*settings, "OffTime", offDuration()));
  setSymbolRate(numberOr(*settings, "SymbolRate", symbolRate()));
  setModulationType(
      static_cast<DigitalMod>(settings->value("ModulationType", modulationType()).toInt()));
  setFilterType(static_cast<FilterType>(settings->value("FilterType", filterType()).toInt()));
  setFilterAlpha(numberOr(*settings, "FilterAlpha", filterAlpha()));
  setFilterLength(settings->value("FilterLength", filterLength()).toInt());
  setData(settings->value("Sequence", sequence()).toInt());
  setSequenceSeed(settings->value("SequenceSeed", sequenceSeed()).toInt());
  setFskDeviation(numberOr(*settings, "FskDeviation", fskDeviation()));
  setOversample(settings->value("Oversample", oversample()).toInt());
  loadCustomModulation(settings);
  loadCustomFilter(settings);
  setCustomBitString(settings->value("CustomBitString", customBitString()).toString());
  settings->endGroup();
  emit updated();
}

// Sizes come from the file and values default to those already in the map; nothing is
// checked, beyond bounding the counts so that a garbled one can't claim gigabytes. A map whose
// count is no power of two plays nothing.
void ModeViewDigitalMod::loadCustomModulation(QSettings* settings) {
  ModulationMap map = customModulation();
  settings->beginGroup("CustomMod");
  map.states.resize(std::clamp(settings->beginReadArray("States"), 0, maxPresetStates));
  for (int i = 0; i < static_cast<int>(map.states.size()); ++i) {
    settings->setArrayIndex(i);
    const Sample old = map.states[i];
    map.states[i] = Sample(static_cast<float>(numberOr(*settings, "Real", old.real())),
                           static_cast<float>(numberOr(*settings, "Imag", old.imag())));
  }
  settings->endArray();
  map.differential = settings->value("DifferentialEncoding", map.differential).toBool();
  map.diffStates.resize(
      std::clamp(settings->beginReadArray("DifferentialOffsets"), 0, maxPresetStates));
  for (int i = 0; i < static_cast<int>(map.diffStates.size()); ++i) {
    settings->setArrayIndex(i);
    map.diffStates[i] = settings->value("Offset", map.diffStates[i]).toInt();
  }
  settings->endArray();
  map.offsetQ = settings->value("OffsetQ", map.offsetQ).toBool();
  settings->endGroup();
  setCustomModulation(map);
}

void ModeViewDigitalMod::loadCustomFilter(QSettings* settings) {
  std::vector<float> taps = customFilterTaps();
  taps.resize(std::clamp(settings->beginReadArray("CustomFilter"), 0, maxPresetTaps));
  for (int i = 0; i < static_cast<int>(taps.size()); ++i) {
    settings->setArrayIndex(i);
    taps[i] = static_cast<float>(numberOr(*settings, "Tap", taps[i]));
  }
  settings->endArray();
  setCustomFilterTaps(taps);
}
