// SPDX-License-Identifier: MIT
// The IEEE 802.11ac view (mode 18): the 802.11n rows with MCS 8, "Group ID" and "Partial AID".
#include "wireless/wlan_vht/mode_view_wlan_vht.h"

#include "widgets/int_line_edit.h"
#include "widgets/my_form_layout.h"

#include <QSettings>

namespace {

// "MCS Select" offers "0" to "8": the table's row 9 is never reached.
constexpr int vhtMcsShown = 9;
constexpr int vhtDefaultMcs = 8;
constexpr int maxGroupId = 63;
constexpr int defaultGroupId = 63;
constexpr int maxPartialAid = 511;
constexpr int defaultPartialAid = 275;

}  // namespace

ModeViewWLANVHT::ModeViewWLANVHT(QWidget* parent)
    : ModeViewWLANHT("IEEE 802.11ac", 18, "WLAN_VHT", vhtMcsShown, vhtDefaultMcs, vhtRate, parent),
      groupIdEdit(new IntLineEdit(this)),
      partialAidEdit(new IntLineEdit(this)) {
  groupIdEdit->setRange(0, maxGroupId);
  groupIdEdit->setValue(defaultGroupId);
  partialAidEdit->setRange(0, maxPartialAid);
  partialAidEdit->setValue(defaultPartialAid);
  int row = 0;
  QFormLayout::ItemRole role;
  formLayout->getWidgetPosition(scramblerInitEdit, &row, &role);
  formLayout->insertRow(row + 1, "Group ID", groupIdEdit);
  formLayout->insertRow(row + 2, "Partial AID", partialAidEdit);
  connect(groupIdEdit, &IntLineEdit::valueChanged, this, &ModeViewWLANVHT::updated);
  connect(partialAidEdit, &IntLineEdit::valueChanged, this, &ModeViewWLANVHT::updated);
}

int ModeViewWLANVHT::groupId() const { return groupIdEdit->value(); }
int ModeViewWLANVHT::partialAid() const { return partialAidEdit->value(); }

VhtSettings ModeViewWLANVHT::settings() const {
  VhtSettings s;
  fillHt(s);
  s.frame.groupId = groupId();
  s.frame.partialAid = partialAid();
  return s;
}

ComplexVector ModeViewWLANVHT::generateFrame() const { return buildVhtSamples(settings()); }

void ModeViewWLANVHT::setGroupId(int value) {
  groupIdEdit->setValue(value);
  emit updated();
}

void ModeViewWLANVHT::setPartialAid(int value) {
  partialAidEdit->setValue(value);
  emit updated();
}

void ModeViewWLANVHT::saveSignalKeys(QSettings* settings) const {
  settings->setValue("GroupID", groupId());
  settings->setValue("PartialAID", partialAid());
}

void ModeViewWLANVHT::loadSignalKeys(QSettings* settings) {
  setGroupId(settings->value("GroupID", groupId()).toInt());
  setPartialAid(settings->value("PartialAID", partialAid()).toInt());
}

void ModeViewWLANVHT::setSignalDefaults() {
  setGroupId(defaultGroupId);
  setPartialAid(defaultPartialAid);
}
