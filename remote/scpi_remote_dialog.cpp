// SPDX-License-Identifier: MIT
// The remote mode notice with its "Return to Local" button.
#include "remote/scpi_remote_dialog.h"

#include <QAbstractButton>
#include <QFontMetrics>

SCPIRemoteDialog::SCPIRemoteDialog(QWidget* parent) : QMessageBox(parent) {
  setWindowTitle("SCPI");
  setText("The KRT40 is in remote mode.\r\nClose this dialog to return to local operation.");
  setStandardButtons(QMessageBox::Close);
  button(QMessageBox::Close)->setText("   Return to Local   ");
  setModal(true);
  const QFontMetrics metrics(font());
  resize(metrics.horizontalAdvance(text()) + 100, metrics.height());
}
