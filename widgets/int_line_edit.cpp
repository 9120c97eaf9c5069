// SPDX-License-Identifier: MIT
// Line edit holding an int beside its text, with optional arrow-key stepping.
#include "widgets/int_line_edit.h"

#include <QIntValidator>
#include <QKeyEvent>
#include <QLocale>

#include <algorithm>

namespace {

// Qt's line edit finishes an edit (Return, focus out) only on acceptable text and otherwise
// asks the validator to fix it up. Without this, an out-of-range count or an empty field
// would stay on display while the old value stays in force. A number goes to the nearest
// bound, anything else gives way to the value in force.
class BoundedIntValidator : public QIntValidator {
public:
  BoundedIntValidator(int minimum, int maximum, IntLineEdit* edit)
      : QIntValidator(minimum, maximum, edit), edit(edit) {
    // The text is read back as plain base 10: no locale group separators.
    setLocale(QLocale::c());
  }

  void fixup(QString& input) const override {
    bool ok = false;
    const qlonglong typed = input.toLongLong(&ok, 10);
    input = QString::number(ok ? std::clamp<qlonglong>(typed, bottom(), top()) : edit->value());
  }

private:
  const IntLineEdit* edit;
};

// Arrow steps may pass the validator's range (the receiving slot clamps) but must not
// overflow an int.
int steppedValue(int value, qint64 delta) {
  const qint64 sum = value + delta;
  if (sum > std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  if (sum < std::numeric_limits<int>::min()) return std::numeric_limits<int>::min();
  return int(sum);
}

}  // namespace

IntLineEdit::IntLineEdit(QWidget* parent) : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  setValidator(new BoundedIntValidator(minimum_, maximum_, this));
  setValue(0);
  connect(this, &QLineEdit::editingFinished, this, &IntLineEdit::editChanged);
}

void IntLineEdit::setValue(int newValue) {
  value_.store(newValue, std::memory_order_relaxed);
  setText(QString::number(newValue));
}

void IntLineEdit::setRange(int newMinimum, int newMaximum) {
  minimum_ = newMinimum;
  maximum_ = newMaximum;
  const QValidator* old = validator();
  setValidator(new BoundedIntValidator(minimum_, maximum_, this));
  delete old;
}

void IntLineEdit::setStep(bool enableArrowKeys, int newStep) {
  arrowKeys_ = enableArrowKeys;
  step_ = newStep;
}

void IntLineEdit::editChanged() {
  const int entered = text().toInt(nullptr, 10);
  if (entered == value()) return;
  value_.store(entered, std::memory_order_relaxed);
  emit valueChanged(entered);
}

void IntLineEdit::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  const bool stepping = arrowKeys_ && (key == Qt::Key_Up || key == Qt::Key_Down);
  if (stepping) {
    // No clamp to the range: the slot that receives valueChanged clamps and writes back.
    const qint64 delta = key == Qt::Key_Up ? qint64(step_) : -qint64(step_);
    setValue(steppedValue(value(), delta));
    emit valueChanged(value());
  }
  QLineEdit::keyPressEvent(event);
  if (stepping) event->accept();  // keep a surrounding scroll area from scrolling too
}

void IntLineEdit::mouseReleaseEvent(QMouseEvent* event) {
  QLineEdit::mouseReleaseEvent(event);
  // A click prepares the field for overtyping.
  if (!hasSelectedText()) selectAll();
}
