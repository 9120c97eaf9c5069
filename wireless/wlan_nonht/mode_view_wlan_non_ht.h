// SPDX-License-Identifier: MIT
// The IEEE 802.11a view (mode 11): rate, OFDM numerology, coding switches and the PSDU source.
#pragma once

#include "wireless/mode_view_wlan.h"
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

// The rate row is chosen by its SIGNAL RATE code; the rest are the rows all WLAN modes share.
class ModeViewWLANNonHT : public ModeViewWLAN {
  Q_OBJECT

public:
  explicit ModeViewWLANNonHT(QWidget* parent = nullptr);

  int rateCode() const;  // safe on the streaming thread

  // What the build takes, the source bits included.
  NonHtSettings settings() const;
  ComplexVector generateFrame() const override;

  void setRate(int code);  // a code that isn't listed leaves the rate

protected:
  const RateParams& labelRate() const override;
  // Group "WLAN_NonHT": "Rate" is the SIGNAL RATE code.
  void saveRateKeys(QSettings* settings) const override;
  void loadRateKeys(QSettings* settings) override;
  void setRateDefaults() override;

private:
  MyComboBox* rateCombo;
};
