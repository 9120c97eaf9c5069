// SPDX-License-Identifier: MIT
// Mode list of the panel; colours the row of the mode that is playing.
#include "widgets/my_list_widget.h"

#include <QColor>

MyListWidget::MyListWidget(QWidget* parent) : QListWidget(parent) {}

QListWidgetItem* MyListWidget::findModeRow(int modeIndex) const {
  for (int row = 0; row < count(); ++row) {
    QListWidgetItem* candidate = item(row);
    const QVariant data = candidate->data(ModeIndexRole);
    // The header row has no data, which must not read as mode 0.
    if (data.isValid() && data.toInt() == modeIndex) return candidate;
  }
  return nullptr;
}

void MyListWidget::setActiveModeColored(int index) {
  if (activeRowMode_ >= 0) {
    if (QListWidgetItem* previous = findModeRow(activeRowMode_))
      previous->setBackground(QColor(Qt::white));
  }
  if (QListWidgetItem* current = findModeRow(index)) {
    current->setBackground(QColor(119, 215, 255));
    activeRowMode_ = index;
  }
}
