// SPDX-License-Identifier: MIT
// The notice shown while a remote client drives the instrument.
#pragma once

#include <QMessageBox>

class SCPIRemoteDialog : public QMessageBox {
  Q_OBJECT
public:
  explicit SCPIRemoteDialog(QWidget* parent = nullptr);
};
