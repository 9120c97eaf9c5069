// SPDX-License-Identifier: MIT
// The IEEE 802.11n view (mode 16): bandwidth, MCS and guard over the rows all WLAN modes share.
#include "wireless/wlan_ht/mode_view_wlan_ht.h"

#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QLabel>
#include <QSettings>

#include <algorithm>

namespace {

constexpr int guardShort = 0;  // index of "Short"
constexpr int guardLong = 1;

}  // namespace

ModeViewWLANHT::ModeViewWLANHT(QWidget* parent)
    : ModeViewWLANHT("IEEE 802.11n", 16, "WLAN_HT", htMcsCount, htMcsCount - 1, htRate, parent) {}

ModeViewWLANHT::ModeViewWLANHT(const QString& name, int modeIndex, const char* presetGroup,
                               int mcsCount, int defaultMcs, RateTable rateTable, QWidget* parent)
    : ModeViewWLAN(name, modeIndex, presetGroup, 0, maxHTLength, parent),
      bandwidthCombo(new MyComboBox(this)),
      mcsCombo(new MyComboBox(this)),
      guardCombo(new MyComboBox(this)),
      rateTable(rateTable),
      defaultMcs(defaultMcs) {
  bandwidthCombo->addItem("20 MHz", 0);
  bandwidthCombo->addItem("40 MHz", 1);
  bandwidthCombo->setEnabled(false);
  for (int i = 0; i < mcsCount; ++i) mcsCombo->addItem(QString::number(i), i);
  mcsCombo->selectValue(defaultMcs);
  guardCombo->addItem("Short", guardShort);
  guardCombo->addItem("Long", guardLong);
  guardCombo->selectValue(guardLong);
  addLeadingRows();
  formLayout->addRow("Bandwidth Select", bandwidthCombo);
  formLayout->addRow("MCS Select", mcsCombo);
  formLayout->addRow("Modulation Type", modulationLabel);
  formLayout->addRow("Encoding", encodingLabel);
  formLayout->addRow("Guard Interval", guardCombo);
  addTrailingRows();
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  // The bandwidth changes only by preset, and the labels follow it there.
  connect(bandwidthCombo, indexChanged, this, &ModeViewWLANHT::updateStrings);
  connect(mcsCombo, indexChanged, this, &ModeViewWLANHT::updateStrings);
  connect(guardCombo, indexChanged, this, &ModeViewWLANHT::updated);
  updateStrings();
}

int ModeViewWLANHT::bandwidth() const { return bandwidthCombo->currentValue(); }
int ModeViewWLANHT::mcs() const { return mcsCombo->currentValue(); }
int ModeViewWLANHT::guardInterval() const { return guardCombo->currentValue(); }
bool ModeViewWLANHT::shortGuard() const { return guardInterval() == guardShort; }
double ModeViewWLANHT::sampleRate() const { return baseSampleRate(); }

// 20 MHz rows at bandwidth 0, the 40 MHz rows otherwise.
const RateParams& ModeViewWLANHT::labelRate() const {
  return rateTable(mcs(), bandwidth() == 0 ? 0 : 1);
}

HtSettings ModeViewWLANHT::settings() const {
  HtSettings s;
  fillHt(s);
  return s;
}

// At most 65535 bytes, so the frame stays far below what an int of samples indexes.
ComplexVector ModeViewWLANHT::generateFrame() const { return buildHtSamples(settings()); }

void ModeViewWLANHT::setBandwidth(int value) { selectOrReport(bandwidthCombo, value); }
void ModeViewWLANHT::setMcs(int index) { selectOrReport(mcsCombo, index); }
void ModeViewWLANHT::setGuardInterval(int index) { selectOrReport(guardCombo, index); }
void ModeViewWLANHT::setDataLength(int bytes) { setHTLength(bytes); }

void ModeViewWLANHT::setHTLength(int bytes) {
  bytesEdit->setValue(std::clamp(bytes, 0, maxHTLength));
  emit updated();
}

void ModeViewWLANHT::saveRateKeys(QSettings* settings) const {
  settings->setValue("Bandwidth", bandwidth());
  settings->setValue("Rate", mcs());
  settings->setValue("GI", guardInterval());
}

void ModeViewWLANHT::loadRateKeys(QSettings* settings) {
  setBandwidth(settings->value("Bandwidth", bandwidth()).toInt());
  setMcs(settings->value("Rate", mcs()).toInt());
  setGuardInterval(settings->value("GI", guardInterval()).toInt());
}

void ModeViewWLANHT::setRateDefaults() {
  setBandwidth(0);
  setMcs(defaultMcs);
  setGuardInterval(guardLong);
}
