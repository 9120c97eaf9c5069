// SPDX-License-Identifier: MIT
// Two exclusive push buttons ("RF On"/"RF Off") that report a change of state only.
#pragma once

#include <QWidget>

#include <atomic>

class QButtonGroup;
class QPushButton;

class MyButtonGroup : public QWidget {
  Q_OBJECT

public:
  // The first button has id 0, the second id 1; the second starts checked.
  MyButtonGroup(const QString& firstText, const QString& secondText, QWidget* parent = nullptr);

  // 0 for the first button, 1 for the second; read by the streaming thread.
  int state() const { return state_.load(std::memory_order_relaxed); }
  // From code: checks the button, stores the state and always emits stateChanged().
  // Ids other than 0 and 1 are ignored.
  void setState(int newState);

  QButtonGroup* group() const { return group_; }
  QPushButton* firstButton() const { return firstButton_; }
  QPushButton* secondButton() const { return secondButton_; }

signals:
  void stateChanged();

public slots:
  // Emits only when the id differs from the state: a click on the checked button is silent.
  void buttonClicked(int id);

private:
  QPushButton* makeButton(const QString& text, int id);

  std::atomic<int> state_{1};
  QButtonGroup* group_;
  QPushButton* firstButton_;
  QPushButton* secondButton_;
};
