// SPDX-License-Identifier: MIT
// Stack of the mode views, addressed by mode index rather than by page number.
#include "modes/my_stacked_widget.h"

#include "modes/mode_widget.h"

MyStackedWidget::MyStackedWidget(QWidget* parent) : QStackedWidget(parent) {}

void MyStackedWidget::addMode(int modeIndex, ModeWidget* view) {
  modeEntries.emplace_back(modeIndex, view);
  addWidget(view);
}

ModeWidget* MyStackedWidget::findMode(int modeIndex) const {
  for (const Entry& entry : modeEntries) {
    if (entry.first == modeIndex) return entry.second;
  }
  return nullptr;
}

void MyStackedWidget::showMode(int modeIndex) {
  if (ModeWidget* view = findMode(modeIndex)) setCurrentWidget(view);
}
