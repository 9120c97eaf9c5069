// SPDX-License-Identifier: MIT
// Line edit holding a frequency in Hz, shown and entered with units.
#pragma once

#include <QLineEdit>

#include <atomic>

class FrequencyEdit : public QLineEdit {
  Q_OBJECT

public:
  explicit FrequencyEdit(double value = 0.0, QWidget* parent = nullptr);

  // Hz; safe to call from the streaming thread.
  double value() const { return value_.load(std::memory_order_relaxed); }
  bool arrowKeys() const { return arrowKeys_; }
  double step() const { return step_; }

  // None of these emit; setValue doesn't clamp.
  void setValue(double newValue);
  void setArrowKeys(bool enabled) { arrowKeys_ = enabled; }
  void setStep(double newStep) { step_ = newStep; }

signals:
  void valueChanged(double newFreq);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

private slots:
  void entryChanged();

private:
  std::atomic<double> value_{0.0};
  bool arrowKeys_ = false;
  double step_ = 0.0;
};
