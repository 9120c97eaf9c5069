// SPDX-License-Identifier: MIT
// The AWGN view (mode 7): bandwidth, length and seed of the noise record.
#include "modes/awgn/mode_view_awgn.h"

#include "modes/mode_types.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>
#include <climits>
#include <cmath>

ModeViewAWGN::ModeViewAWGN(QWidget* parent)
    : ModeWidget("AWGN", 7, parent),
      bandwidthEdit_(new FrequencyEdit(1e9, this)),
      lengthEdit_(new TimeEdit(this)),
      seedEdit_(new IntLineEdit(this)) {
  lengthEdit_->setRange(minLength, maxLength);
  seedEdit_->setStep(true, 1);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Bandwidth", bandwidthEdit_);
  formLayout->addRow("Length", lengthEdit_);
  formLayout->addRow("Seed", seedEdit_);

  connect(bandwidthEdit_, &FrequencyEdit::valueChanged, this, &ModeViewAWGN::setBandwidth);
  connect(lengthEdit_, &TimeEdit::valueChanged, this, &ModeViewAWGN::setLength);
  connect(seedEdit_, &IntLineEdit::valueChanged, this, &ModeViewAWGN::setSeed);
}

double ModeViewAWGN::bandwidth() const { return bandwidthEdit_->value(); }
double ModeViewAWGN::length() const { return lengthEdit_->value(); }
int ModeViewAWGN::seed() const { return seedEdit_->value(); }

void ModeViewAWGN::setDefaults() {
  setBandwidth(4e7);
  setLength(0.01);
  setSeed(23);
}

void ModeViewAWGN::saveSettings(QSettings* settings) {
  settings->beginGroup("AWGN");
  settings->setValue("Bandwidth", bandwidth());
  settings->setValue("Length", length());
  settings->setValue("Seed", seed());
  settings->endGroup();
}

void ModeViewAWGN::loadSettings(QSettings* settings) {
  settings->beginGroup("AWGN");
  setBandwidth(settings->value("Bandwidth", bandwidth()).toDouble());
  setLength(settings->value("Length", length()).toDouble());
  setSeed(settings->value("Seed", seed()).toInt());
  settings->endGroup();
}

void ModeViewAWGN::setBandwidth(double newBandwidth) {
  bandwidthEdit_->setValue(clampOr(newBandwidth, minBandwidth, maxBandwidth, bandwidth()));
  emit updated();
}

void ModeViewAWGN::setLength(double newLength) {
  lengthEdit_->setValue(clampOr(newLength, minLength, maxLength, length()));
  emit updated();
}

void ModeViewAWGN::setSeed(int newSeed) {
  seedEdit_->setValue(seedMagnitude(newSeed));
  emit updated();
}
