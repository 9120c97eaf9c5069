// SPDX-License-Identifier: MIT
// Push button that keeps a square shape, for the arrow buttons of the front panel.
#include "widgets/q_square_button.h"

namespace {

QSize squareOf(const QSize& size) {
  const int side = qMax(size.width(), size.height());
  return QSize(side, side);
}

}  // namespace

QSquareButton::QSquareButton(QWidget* parent) : QPushButton(parent) {
  QSizePolicy policy = sizePolicy();
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

QSquareButton::QSquareButton(const QIcon& icon, QWidget* parent) : QSquareButton(parent) {
  setIcon(icon);
}

// The larger side wins so that the icon and the frame always fit.
QSize QSquareButton::sizeHint() const { return squareOf(QPushButton::sizeHint()); }

QSize QSquareButton::minimumSizeHint() const { return squareOf(QPushButton::minimumSizeHint()); }
