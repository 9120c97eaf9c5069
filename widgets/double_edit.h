// SPDX-License-Identifier: MIT
// Line edit holding a double beside its text, with optional arrow-key stepping.
#pragma once

#include <QLineEdit>

#include <atomic>

class QDoubleValidator;

class DoubleEdit : public QLineEdit {
  Q_OBJECT

public:
  // A validator of [minimum, maximum] with `decimals`, in standard notation.
  DoubleEdit(double minimum, double maximum, int decimals, double value, QWidget* parent = nullptr);
  // A validator without limits, value 0.
  explicit DoubleEdit(QWidget* parent = nullptr);

  // Safe to call from the streaming thread.
  double value() const { return value_.load(std::memory_order_relaxed); }
  double step() const { return step_; }
  bool arrowKeys() const { return arrowKeys_; }

  // None of these emit: a view's slot clamps and stores without echoing a signal.
  void setValue(double newValue);
  void setRange(double minimum, double maximum, int decimals);
  void setDecimals(int decimals);
  void setStep(double newStep) { step_ = newStep; }
  void setArrowKeys(bool enabled) { arrowKeys_ = enabled; }

  // Wide enough for the longest number of the range, so a narrow window can't cut "-107.55".
  QSize minimumSizeHint() const override;

signals:
  void editUpdated(double);

protected:
  void keyPressEvent(QKeyEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

private slots:
  void editChanged();

private:
  void installValidator(QDoubleValidator* validator);

  std::atomic<double> value_{0.0};
  QString widestText;  // of the range's bounds; empty without a range
  double step_ = 0.0;
  bool arrowKeys_ = false;
};
