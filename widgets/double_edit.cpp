// SPDX-License-Identifier: MIT
// Line edit holding a double beside its text, with optional arrow-key stepping.
#include "widgets/double_edit.h"

#include <QDoubleValidator>
#include <QKeyEvent>
#include <QLocale>

DoubleEdit::DoubleEdit(double minimum, double maximum, int decimals, double value, QWidget* parent)
    : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  setRange(minimum, maximum, decimals);
  setValue(value);
  connect(this, &QLineEdit::editingFinished, this, &DoubleEdit::editChanged);
}

DoubleEdit::DoubleEdit(QWidget* parent) : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  installValidator(new QDoubleValidator(this));
  setValue(0.0);
  connect(this, &QLineEdit::editingFinished, this, &DoubleEdit::editChanged);
}

void DoubleEdit::setValue(double newValue) {
  value_.store(newValue, std::memory_order_relaxed);
  setText(QString::number(newValue));
}

void DoubleEdit::setRange(double minimum, double maximum, int decimals) {
  auto* validator = new QDoubleValidator(minimum, maximum, decimals, this);
  validator->setNotation(QDoubleValidator::StandardNotation);
  installValidator(validator);
}

void DoubleEdit::setDecimals(int decimals) {
  auto* validator = new QDoubleValidator(this);
  validator->setDecimals(decimals);
  installValidator(validator);
}

void DoubleEdit::installValidator(QDoubleValidator* validator) {
  // The text is read back with QString::toDouble, so the validator must agree on the
  // decimal point whatever the user's locale.
  validator->setLocale(QLocale::c());
  const QValidator* old = this->validator();
  setValidator(validator);
  delete old;
}

void DoubleEdit::editChanged() {
  const double entered = text().toDouble();
  if (entered == value()) return;
  value_.store(entered, std::memory_order_relaxed);
  emit editUpdated(entered);
}

void DoubleEdit::keyPressEvent(QKeyEvent* event) {
  QLineEdit::keyPressEvent(event);
  if (!arrowKeys_) return;
  const int key = event->key();
  if (key != Qt::Key_Up && key != Qt::Key_Down) return;
  // No clamp here: the slot that receives editUpdated clamps and writes back.
  setValue(key == Qt::Key_Up ? value() + step_ : value() - step_);
  event->accept();  // keep a surrounding scroll area from scrolling too
  emit editUpdated(value());
}

void DoubleEdit::mouseReleaseEvent(QMouseEvent* event) {
  QLineEdit::mouseReleaseEvent(event);
  // A click prepares the field for overtyping.
  if (!hasSelectedText()) selectAll();
}
