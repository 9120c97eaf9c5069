// SPDX-License-Identifier: MIT
// Push button that keeps a square shape, for the arrow buttons of the front panel.
#pragma once

#include <QPushButton>

class QSquareButton : public QPushButton {
  Q_OBJECT

public:
  explicit QSquareButton(QWidget* parent = nullptr);
  explicit QSquareButton(const QIcon& icon, QWidget* parent = nullptr);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override { return width; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
};
