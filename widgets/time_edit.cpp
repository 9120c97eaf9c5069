// SPDX-License-Identifier: MIT
// Line edit holding a time in seconds within limits, shown and entered with units.
#include "widgets/time_edit.h"

#include "widgets/unit_format.h"

#include <QtGlobal>

#include <cmath>

TimeEdit::TimeEdit(QWidget* parent) : QLineEdit(parent) {
  setText(formatTime(value()));
  connect(this, &QLineEdit::editingFinished, this, &TimeEdit::entryChanged);
}

double TimeEdit::limited(double seconds) const {
  // qBound stays defined even if a caller passes minimum > maximum.
  return qBound(minimum_, seconds, maximum_);
}

void TimeEdit::setValue(double newValue) {
  // A NaN from a preset file is no value: the one in force stays. Infinities are limited.
  if (std::isnan(newValue)) return;
  value_.store(limited(newValue), std::memory_order_relaxed);
  setText(formatTime(value()));
}

void TimeEdit::setRange(double newMinimum, double newMaximum) {
  minimum_ = newMinimum;
  maximum_ = newMaximum;
  setValue(value());
}

void TimeEdit::entryChanged() {
  bool ok = false;
  const double typed = parseTime(text(), value(), &ok);
  const double entered = limited(typed);
  if (!ok) {
    setValue(value());
    return;
  }
  if (entered == value()) {
    // Another spelling of the value ("1ms" for 1.000 ms) stays as typed; an entry that the
    // limits brought back to the value shows the value in force.
    if (typed != entered) setValue(value());
    return;
  }
  setValue(entered);
  emit valueChanged(entered);
}

void TimeEdit::mouseReleaseEvent(QMouseEvent* event) {
  QLineEdit::mouseReleaseEvent(event);
  // A click prepares the field for overtyping.
  if (!hasSelectedText()) selectAll();
}
