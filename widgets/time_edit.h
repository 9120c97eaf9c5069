// SPDX-License-Identifier: MIT
// Line edit holding a time in seconds within limits, shown and entered with units.
#pragma once

#include <QLineEdit>

#include <atomic>
#include <limits>

class TimeEdit : public QLineEdit {
  Q_OBJECT

public:
  explicit TimeEdit(QWidget* parent = nullptr);

  // Seconds; safe to call from the streaming thread.
  double value() const { return value_.load(std::memory_order_relaxed); }
  double minimum() const { return minimum_; }
  double maximum() const { return maximum_; }

  // Both limit the value to [minimum, maximum] and show it; neither emits.
  void setValue(double newValue);
  void setRange(double newMinimum, double newMaximum);

signals:
  void valueChanged(double newTime);

protected:
  void mouseReleaseEvent(QMouseEvent* event) override;

private slots:
  void entryChanged();

private:
  double limited(double seconds) const;

  std::atomic<double> value_{0.001};
  double minimum_ = std::numeric_limits<double>::min();
  double maximum_ = std::numeric_limits<double>::max();
};
