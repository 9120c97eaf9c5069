// SPDX-License-Identifier: MIT
// The IEEE 802.11n view (mode 16): bandwidth, MCS and guard over the rows all WLAN modes share.
#pragma once

#include "wireless/mode_view_wlan.h"
#include "wireless/wlan_ht/ht_frame_builder.h"

// The frame is always 20 MHz: "Bandwidth Select" is disabled and reaches "40 MHz" only by a
// preset, which sets the bandwidth bit and the labels' row. The 802.11ac view extends this one.
class ModeViewWLANHT : public ModeViewWLAN {
  Q_OBJECT

public:
  static constexpr int maxHTLength = 65535;  // bytes: the 16 bits of the HT length field

  explicit ModeViewWLANHT(QWidget* parent = nullptr);

  // All safe on the streaming thread.
  int bandwidth() const;  // 0: 20 MHz, 1: 40 MHz
  int mcs() const;
  int guardInterval() const;  // combo index: 0 short, 1 long
  bool shortGuard() const;
  // "Sample Rate" alone, not times "Oversample Amount" (which stays 1); the idle count is
  // still taken at the product.
  double sampleRate() const override;

  HtSettings settings() const;
  ComplexVector generateFrame() const override;

  // Entries that aren't listed leave the selection; each emits updated() once.
  void setBandwidth(int value);
  void setMcs(int index);
  void setGuardInterval(int index);
  void setDataLength(int bytes) override;  // as setHTLength

public slots:
  void setHTLength(int bytes);

protected:
  using RateTable = const RateParams& (*)(int mcs, int bandwidth);
  ModeViewWLANHT(const QString& name, int modeIndex, const char* presetGroup, int mcsCount,
                 int defaultMcs, RateTable rateTable, QWidget* parent);

  // The HT fields and the shared rows of a build's settings.
  template <class FrameParams>
  void fillHt(WlanSettings<FrameParams>& s) const;

  const RateParams& labelRate() const override;
  // "Bandwidth" is the combo's data, "Rate" and "GI" its indices.
  void saveRateKeys(QSettings* settings) const override;
  void loadRateKeys(QSettings* settings) override;
  void setRateDefaults() override;

private:
  MyComboBox* bandwidthCombo;
  MyComboBox* mcsCombo;
  MyComboBox* guardCombo;
  RateTable rateTable;
  int defaultMcs;
};

template <class FrameParams>
void ModeViewWLANHT::fillHt(WlanSettings<FrameParams>& s) const {
  s.frame.mcs = mcs();
  s.frame.bandwidth = bandwidth();
  s.frame.shortGuard = shortGuard();
  fillShared(s);
}
