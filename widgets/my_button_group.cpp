// SPDX-License-Identifier: MIT
// Two exclusive push buttons ("RF On"/"RF Off") that report a change of state only.
#include "widgets/my_button_group.h"

#include <QButtonGroup>
#include <QPushButton>
#include <QVBoxLayout>

MyButtonGroup::MyButtonGroup(const QString& firstText, const QString& secondText, QWidget* parent)
    : QWidget(parent), group_(new QButtonGroup(this)) {
  group_->setExclusive(true);
  firstButton_ = makeButton(firstText, 0);
  secondButton_ = makeButton(secondText, 1);
  secondButton_->setChecked(true);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(2);
  layout->addWidget(firstButton_);
  layout->addWidget(secondButton_);
  setFixedSize(50, 70);

  connect(group_, &QButtonGroup::idClicked, this, &MyButtonGroup::buttonClicked);
}

QPushButton* MyButtonGroup::makeButton(const QString& text, int id) {
  auto* button = new QPushButton(text, this);
  button->setCheckable(true);
  group_->addButton(button, id);
  return button;
}

void MyButtonGroup::setState(int newState) {
  QAbstractButton* button = group_->button(newState);
  if (!button) return;
  button->setChecked(true);
  state_.store(newState, std::memory_order_relaxed);
  emit stateChanged();
}

void MyButtonGroup::buttonClicked(int id) {
  if (id == state()) return;
  state_.store(id, std::memory_order_relaxed);
  emit stateChanged();
}
