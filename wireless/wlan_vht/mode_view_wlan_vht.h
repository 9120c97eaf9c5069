// SPDX-License-Identifier: MIT
// The IEEE 802.11ac view (mode 18): the 802.11n rows with MCS 8, "Group ID" and "Partial AID".
#pragma once

#include "wireless/wlan_ht/mode_view_wlan_ht.h"
#include "wireless/wlan_vht/vht_frame_builder.h"

class ModeViewWLANVHT : public ModeViewWLANHT {
  Q_OBJECT

public:
  explicit ModeViewWLANVHT(QWidget* parent = nullptr);

  // Safe on the streaming thread.
  int groupId() const;
  int partialAid() const;

  VhtSettings settings() const;
  ComplexVector generateFrame() const override;

  // Stored as given: their validators bound typing only, and a preset's value stands.
  void setGroupId(int value);
  void setPartialAid(int value);

protected:
  // "GroupID" and "PartialAID", after "ScramblerInit".
  void saveSignalKeys(QSettings* settings) const override;
  void loadSignalKeys(QSettings* settings) override;
  void setSignalDefaults() override;

private:
  IntLineEdit* groupIdEdit;
  IntLineEdit* partialAidEdit;
};
