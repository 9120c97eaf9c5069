// SPDX-License-Identifier: MIT
// The main window's status bar: mode, device, serial, temperature and version notice.
#pragma once

#include <QStatusBar>

class QLabel;

class StatusBar : public QStatusBar {
  Q_OBJECT
public:
  explicit StatusBar(QWidget* parent = nullptr);

  void setModeText(const QString& text);
  void setDeviceText(const QString& text);
  void setSerialText(const QString& text);
  void setTemperatureText(const QString& text);
  void setVersionText(const QString& text);

  QLabel* modeLabel;
  QLabel* deviceLabel;
  QLabel* serialLabel;
  QLabel* temperatureLabel;
  QLabel* versionLabel;
};
