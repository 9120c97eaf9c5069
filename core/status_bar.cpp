// SPDX-License-Identifier: MIT
// The main window's status bar.
#include "core/status_bar.h"

#include <QLabel>

namespace {
QString padded(const QString& text) { return "   " + text + "   "; }
}  // namespace

StatusBar::StatusBar(QWidget* parent) : QStatusBar(parent) {
  modeLabel = new QLabel(this);
  deviceLabel = new QLabel(this);
  serialLabel = new QLabel(this);
  temperatureLabel = new QLabel(this);
  versionLabel = new QLabel(this);
  addWidget(modeLabel);
  addPermanentWidget(deviceLabel);
  addPermanentWidget(serialLabel);
  addPermanentWidget(temperatureLabel);
  addPermanentWidget(versionLabel);
  setDeviceText("No Device Connected");
}

void StatusBar::setModeText(const QString& text) { modeLabel->setText(text); }
void StatusBar::setDeviceText(const QString& text) { deviceLabel->setText(padded(text)); }
void StatusBar::setSerialText(const QString& text) { serialLabel->setText(padded(text)); }
void StatusBar::setTemperatureText(const QString& text) { temperatureLabel->setText(text); }
void StatusBar::setVersionText(const QString& text) { versionLabel->setText(text); }
