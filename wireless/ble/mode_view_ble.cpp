// SPDX-License-Identifier: MIT
// The Bluetooth LE view (mode 17): PHY, channel, access address, CRC, whitening and the PDU.
#include "wireless/ble/mode_view_ble.h"

#include "digital/symbol_editor_dialog.h"
#include "modes/mode_types.h"
#include "widgets/hex_editor.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include <iterator>

namespace {

struct Item {
  int value;
  const char* text;
};

const Item phyItems[] = {{0, "LE 1M"}, {1, "LE 2M"}};
const Item pduItems[] = {{7, "PN7"}, {9, "PN9"}, {15, "PN15"}, {blePduCustom, "Custom"}};

constexpr int defaultChannel = 37;
constexpr int defaultSamplesPerSymbol = 4;
const char* const defaultAccessAddress = "5A3D2F1E";
// Eight digits in a six-digit field: only the CRC's low 24 bits count.
const char* const defaultCrcInit = "55555555";
constexpr int defaultPduSource = 9;
constexpr int defaultSeed = 23;
constexpr int defaultBytes = 32;
constexpr double defaultIdleInterval = 0.001;  // s

void addItems(MyComboBox* combo, const Item* first, const Item* last) {
  for (; first != last; ++first) combo->addItem(first->text, first->value);
}

}  // namespace

ModeViewBLE::ModeViewBLE(QWidget* parent)
    : ModeWidget("Bluetooth LE", 17, parent),
      triggerCombo(new MyComboBox(this)),
      phyCombo(new MyComboBox(this)),
      channelEdit(new IntLineEdit(this)),
      spsEdit(new IntLineEdit(this)),
      accessAddressEdit(new HexEditor(defaultAccessAddress, 8, this)),
      crcCheck(new QCheckBox(this)),
      crcInitEdit(new HexEditor("", 6, this)),
      whiteningCheck(new QCheckBox(this)),
      pduCombo(new MyComboBox(this)),
      seedEdit(new IntLineEdit(this)),
      bytesEdit(new IntLineEdit(this)),
      idleEdit(new TimeEdit(this)),
      durationLabel(new QLabel(this)) {
  for (int value = 0; value < 2; ++value) triggerCombo->addItem(triggerTypeTexts[value], value);
  addItems(phyCombo, std::begin(phyItems), std::end(phyItems));
  channelEdit->setRange(0, 39);
  channelEdit->setValue(defaultChannel);
  spsEdit->setRange(2, 16);
  spsEdit->setValue(defaultSamplesPerSymbol);
  spsEdit->setEnabled(false);
  crcInitEdit->setText(defaultCrcInit);
  accessAddress_ = accessAddressEdit->toInt();
  crcInit_ = crcInitEdit->toInt();
  crcCheck->setChecked(true);
  whiteningCheck->setChecked(true);
  addItems(pduCombo, std::begin(pduItems), std::end(pduItems));
  pduCombo->selectValue(defaultPduSource);
  seedEdit->setValue(defaultSeed);
  bytesEdit->setValue(defaultBytes);
  idleEdit->setValue(defaultIdleInterval);
  addControls();
  connectControls();
}

void ModeViewBLE::addControls() {
  auto* customButton = new QPushButton("Custom Data", this);
  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Mode", phyCombo);
  formLayout->addRow("Channel Index", channelEdit);
  formLayout->addRow("Samples Per Symbol", spsEdit);
  formLayout->addRow("Access Address", accessAddressEdit);
  formLayout->addRow("CRC Attached", crcCheck);
  formLayout->addRow("CRC Initialization", crcInitEdit);
  formLayout->addRow("Data Whitening", whiteningCheck);
  formLayout->addRow("PDU Data", pduCombo);
  formLayout->addRow("PDU Data Seed", seedEdit);
  formLayout->addRow("Bytes", bytesEdit);
  formLayout->addRow(new QLabel(this), customButton);
  formLayout->addRow(new QLabel(this), new QLabel(this));
  formLayout->addRow("Idle Interval", idleEdit);
  formLayout->addRow("Signal Duration", durationLabel);  // nothing writes it
  connect(customButton, &QPushButton::clicked, this, &ModeViewBLE::defineCustomSequence);
}

void ModeViewBLE::connectControls() {
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(triggerCombo, indexChanged, this, &ModeViewBLE::updated);
  connect(phyCombo, indexChanged, this, &ModeViewBLE::updated);
  connect(channelEdit, &IntLineEdit::valueChanged, this, &ModeViewBLE::updated);
  connectHex(accessAddressEdit, accessAddress_);
  connectHex(crcInitEdit, crcInit_);
  connect(crcCheck, &QCheckBox::toggled, this, [this](bool on) {
    crcAttached_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(whiteningCheck, &QCheckBox::toggled, this, [this](bool on) {
    whitening_.store(on, std::memory_order_relaxed);
    emit updated();
  });
  connect(pduCombo, indexChanged, this, &ModeViewBLE::updated);
  connect(seedEdit, &IntLineEdit::valueChanged, this, &ModeViewBLE::updated);
  connect(bytesEdit, &IntLineEdit::valueChanged, this, &ModeViewBLE::updated);
  connect(idleEdit, &TimeEdit::valueChanged, this, &ModeViewBLE::updated);
}

// The mirror follows every keystroke; the output restarts once the entry is finished.
void ModeViewBLE::connectHex(HexEditor* edit, std::atomic<uint32_t>& mirror) {
  connect(edit, &QLineEdit::textChanged, this,
          [edit, &mirror] { mirror.store(edit->toInt(), std::memory_order_relaxed); });
  connect(edit, &QLineEdit::editingFinished, this, &ModeViewBLE::updated);
}

// ---- Reading -------------------------------------------------------------------------------

BleSettings ModeViewBLE::settings() const {
  BleSettings s;
  s.phy = phyCombo->currentValue();
  s.channelIndex = channelEdit->value();
  s.accessAddress = accessAddress_.load(std::memory_order_relaxed);
  s.crcAttached = crcAttached_.load(std::memory_order_relaxed);
  s.crcInit = crcInit_.load(std::memory_order_relaxed);
  s.whitening = whitening_.load(std::memory_order_relaxed);
  return s;
}

int ModeViewBLE::samplesPerSymbol() const { return spsEdit->value(); }
double ModeViewBLE::idleInterval() const { return idleEdit->value(); }
int ModeViewBLE::triggerMode() const { return triggerCombo->currentValue(); }
bool ModeViewBLE::isSingle() const { return triggerMode() == TriggerSingle; }
int ModeViewBLE::pduSource() const { return pduCombo->currentValue(); }
int ModeViewBLE::pduSeed() const { return seedEdit->value(); }
int ModeViewBLE::byteCount() const { return bytesEdit->value(); }
QString ModeViewBLE::accessAddressText() const { return accessAddressEdit->text(); }
QString ModeViewBLE::crcInitText() const { return crcInitEdit->text(); }

QString ModeViewBLE::customPattern() const {
  const std::lock_guard<std::mutex> hold(customLock);
  return customPattern_;
}

// "PDU Data Seed" is kept and saved, but the PN sources start from a fixed seed.
std::optional<std::vector<uint8_t>> ModeViewBLE::pduBits() const {
  const int source = pduSource();
  return blePduBits(source, byteCount(), source == blePduCustom ? customPattern() : QString());
}

// ---- Setters -------------------------------------------------------------------------------
// A control whose state moves reports the change itself; one that stays is reported here, so
// each call restarts the output once.

void ModeViewBLE::setTriggerMode(int mode) {
  if (!triggerCombo->selectValue(mode)) emit updated();
}

void ModeViewBLE::setPhy(int phy) {
  if (!phyCombo->selectValue(phy)) emit updated();
}

void ModeViewBLE::setChannelIndex(int index) {
  channelEdit->setValue(index);
  emit updated();
}

void ModeViewBLE::setHex(HexEditor* edit, std::atomic<uint32_t>& mirror, const QString& hex) {
  edit->setText(hex);
  mirror.store(edit->toInt(), std::memory_order_relaxed);
  emit updated();
}

void ModeViewBLE::setAccessAddress(const QString& hex) {
  setHex(accessAddressEdit, accessAddress_, hex);
}

void ModeViewBLE::setCrcInit(const QString& hex) { setHex(crcInitEdit, crcInit_, hex); }

void ModeViewBLE::setCheck(QCheckBox* box, bool on) {
  if (box->isChecked() == on) emit updated();
  box->setChecked(on);
}

void ModeViewBLE::setCrcAttached(bool on) { setCheck(crcCheck, on); }
void ModeViewBLE::setWhitening(bool on) { setCheck(whiteningCheck, on); }

void ModeViewBLE::setPduSource(int source) {
  if (!pduCombo->selectValue(source)) emit updated();
}

void ModeViewBLE::setPduSeed(int seed) {
  seedEdit->setValue(seed);
  emit updated();
}

void ModeViewBLE::setByteCount(int bytes) {
  bytesEdit->setValue(bytes);
  emit updated();
}

void ModeViewBLE::setIdleInterval(double seconds) {
  idleEdit->setValue(seconds);
  emit updated();
}

void ModeViewBLE::setCustomPattern(const QString& pattern) {
  const std::lock_guard<std::mutex> hold(customLock);
  customPattern_ = pattern;
}

// ---- Dialog --------------------------------------------------------------------------------

int ModeViewBLE::runDialog(QDialog& dialog) { return dialog.exec(); }

void ModeViewBLE::defineCustomSequence() {
  SymbolEditorDialog dialog(this);
  dialog.setText(customPattern());
  if (runDialog(dialog) != QDialog::Accepted) return;
  setCustomPattern(dialog.text());
  emit updated();
}

// ---- Presets -------------------------------------------------------------------------------

// The control table's defaults; "Samples Per Symbol" and the custom pattern, which is no
// control, are left as they are.
void ModeViewBLE::setDefaults() {
  setTriggerMode(TriggerContinuous);
  setPhy(0);
  setChannelIndex(defaultChannel);
  setAccessAddress(defaultAccessAddress);
  setCrcAttached(true);
  setCrcInit(defaultCrcInit);
  setWhitening(true);
  setPduSource(defaultPduSource);
  setPduSeed(defaultSeed);
  setByteCount(defaultBytes);
  setIdleInterval(defaultIdleInterval);
}

// "Mode" and "Idle Interval" are no keys: they keep their values across a preset load.
void ModeViewBLE::saveSettings(QSettings* settings) {
  settings->beginGroup("BLE");
  settings->setValue("TriggerMode", triggerMode());
  settings->setValue("ChannelIndex", channelEdit->value());
  settings->setValue("AccessAddress", accessAddressText());
  settings->setValue("CRCEnabled", crcCheck->isChecked());
  settings->setValue("CRCInit", crcInitText());
  settings->setValue("WhiteningEnabled", whiteningCheck->isChecked());
  settings->setValue("PDUDataSource", pduSource());
  settings->setValue("PDUDataSeed", pduSeed());
  settings->setValue("PDUByteCount", byteCount());
  settings->setValue("CustomBitString", customPattern());
  settings->endGroup();
}

// Each key falls back to the control's value; nothing is limited beyond what the controls do.
void ModeViewBLE::loadSettings(QSettings* settings) {
  settings->beginGroup("BLE");
  setTriggerMode(settings->value("TriggerMode", triggerMode()).toInt());
  setChannelIndex(settings->value("ChannelIndex", channelEdit->value()).toInt());
  setAccessAddress(settings->value("AccessAddress", accessAddressText()).toString());
  setCrcAttached(settings->value("CRCEnabled", crcCheck->isChecked()).toBool());
  setCrcInit(settings->value("CRCInit", crcInitText()).toString());
  setWhitening(settings->value("WhiteningEnabled", whiteningCheck->isChecked()).toBool());
  setPduSource(settings->value("PDUDataSource", pduSource()).toInt());
  setPduSeed(settings->value("PDUDataSeed", pduSeed()).toInt());
  setByteCount(settings->value("PDUByteCount", byteCount()).toInt());
  setCustomPattern(settings->value("CustomBitString", customPattern()).toString());
  settings->endGroup();
  emit updated();
}
