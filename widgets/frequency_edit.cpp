// SPDX-License-Identifier: MIT
// Line edit holding a frequency in Hz, shown and entered with units.
#include "widgets/frequency_edit.h"

#include "widgets/unit_format.h"

#include <QFontMetrics>
#include <QKeyEvent>

#include <cmath>

FrequencyEdit::FrequencyEdit(double value, QWidget* parent) : QLineEdit(parent) {
  setMinimumWidth(
      fontMetrics().horizontalAdvance(QStringLiteral("          999.999999 MHz          ")));
  setValue(value);
  connect(this, &QLineEdit::editingFinished, this, &FrequencyEdit::entryChanged);
}

void FrequencyEdit::setValue(double newValue) {
  // A NaN or an infinity from a preset file is no value: the one in force stays.
  if (!std::isfinite(newValue)) return;
  value_.store(newValue, std::memory_order_relaxed);
  setText(formatFrequency(newValue));
}

void FrequencyEdit::entryChanged() {
  bool ok = false;
  const double entered = parseFrequency(text(), value(), &ok);
  if (ok && entered != value()) {
    setValue(entered);
    emit valueChanged(entered);
    return;
  }
  // Unchanged or unreadable: show the value in force again, so a bad entry leaves no trace.
  setText(formatFrequency(value()));
}

void FrequencyEdit::keyPressEvent(QKeyEvent* event) {
  QLineEdit::keyPressEvent(event);
  if (!arrowKeys_) return;
  const int key = event->key();
  if (key != Qt::Key_Up && key != Qt::Key_Down) return;
  // No clamp here: the slot that receives valueChanged clamps and writes back.
  setValue(key == Qt::Key_Up ? value() + step_ : value() - step_);
  event->accept();  // keep a surrounding scroll area from scrolling too
  emit valueChanged(value());
}

void FrequencyEdit::mouseReleaseEvent(QMouseEvent* event) {
  QLineEdit::mouseReleaseEvent(event);
  // A click prepares the field for overtyping.
  if (!hasSelectedText()) selectAll();
}
