// SPDX-License-Identifier: MIT
// Line edit holding an int beside its text, with optional arrow-key stepping.
#pragma once

#include <QLineEdit>

#include <atomic>
#include <limits>

class IntLineEdit : public QLineEdit {
  Q_OBJECT

public:
  explicit IntLineEdit(QWidget* parent = nullptr);

  // Safe to call from the streaming thread.
  int value() const { return value_.load(std::memory_order_relaxed); }
  int step() const { return step_; }
  bool arrowKeys() const { return arrowKeys_; }
  int minimum() const { return minimum_; }
  int maximum() const { return maximum_; }

  // None of these emit.
  void setValue(int newValue);
  void setRange(int newMinimum, int newMaximum);
  void setStep(bool enableArrowKeys, int newStep);

signals:
  void valueChanged(int);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

private slots:
  void editChanged();

private:
  std::atomic<int> value_{0};
  int step_ = 1;
  bool arrowKeys_ = false;
  int minimum_ = std::numeric_limits<int>::min();
  int maximum_ = std::numeric_limits<int>::max();
};
