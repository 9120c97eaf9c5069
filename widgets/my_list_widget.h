// SPDX-License-Identifier: MIT
// Mode list of the panel; colours the row of the mode that is playing.
#pragma once

#include <QListWidget>

class MyListWidget : public QListWidget {
  Q_OBJECT

public:
  // Rows carry their mode index as data under this role; the header row carries none.
  static constexpr int ModeIndexRole = Qt::UserRole;

  explicit MyListWidget(QWidget* parent = nullptr);

  // The mode index of the coloured row, -1 before any.
  int activeRowMode() const { return activeRowMode_; }
  // The row carrying `modeIndex`, or null.
  QListWidgetItem* findModeRow(int modeIndex) const;

public slots:
  // Clears the old row's colour, then colours the row of `index` if there is one. An index
  // without a row leaves activeRowMode as it was.
  void setActiveModeColored(int index);

private:
  int activeRowMode_ = -1;
};
