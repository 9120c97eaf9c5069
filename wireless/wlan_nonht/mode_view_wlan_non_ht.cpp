// SPDX-License-Identifier: MIT
// The IEEE 802.11a view (mode 11): rate, OFDM numerology, coding switches and the PSDU source.
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"

#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QLabel>
#include <QSettings>

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

constexpr int defaultRateCode = 12;  // "54 Mb/s"
constexpr int maxDataLength = 4095;  // bytes, by typing

}  // namespace

ModeViewWLANNonHT::ModeViewWLANNonHT(QWidget* parent)
    : ModeViewWLAN("IEEE 802.11a", 11, "WLAN_NonHT", 1, maxDataLength, parent),
      rateCombo(new MyComboBox(this)) {
  for (int i = 0; i < nonHtRateCount; ++i)
    rateCombo->addItem(nonHtRateRow(i).label, nonHtRateRow(i).rateCode);
  rateCombo->selectValue(defaultRateCode);
  addLeadingRows();
  formLayout->addRow("Rate Select", rateCombo);
  formLayout->addRow("Modulation Type", modulationLabel);
  formLayout->addRow("Encoding", encodingLabel);
  addTrailingRows();
  connect(rateCombo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
          &ModeViewWLANNonHT::updateStrings);
  updateStrings();
}

int ModeViewWLANNonHT::rateCode() const { return rateCombo->currentValue(); }

const RateParams& ModeViewWLANNonHT::labelRate() const { return nonHtRate(rateCode()); }

NonHtSettings ModeViewWLANNonHT::settings() const {
  NonHtSettings s;
  s.frame.rateCode = rateCode();
  s.frame.rate = nonHtRate(s.frame.rateCode);
  fillShared(s);
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

void ModeViewWLANNonHT::setRate(int code) { selectOrReport(rateCombo, code); }

void ModeViewWLANNonHT::saveRateKeys(QSettings* settings) const {
  settings->setValue("Rate", rateCode());
}

void ModeViewWLANNonHT::loadRateKeys(QSettings* settings) {
  setRate(settings->value("Rate", rateCode()).toInt());
}

void ModeViewWLANNonHT::setRateDefaults() { setRate(defaultRateCode); }
