// SPDX-License-Identifier: MIT
// Line edit holding a double beside its text, with optional arrow-key stepping.
#include "widgets/double_edit.h"

#include <QDoubleValidator>
#include <QKeyEvent>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace {

// Qt's line edit finishes an edit (Return, focus out) only on acceptable text and otherwise
// asks the validator to fix it up. Without this, an out-of-range number or a half-typed one
// would stay on display while the old value stays in force. A number goes to the nearest
// bound, anything else gives way to the value in force.
class BoundedDoubleValidator : public QDoubleValidator {
public:
  explicit BoundedDoubleValidator(DoubleEdit* edit) : QDoubleValidator(edit), edit(edit) {
    // The text is read back with QString::toDouble, so the validator must agree on the
    // decimal point whatever the user's locale.
    setLocale(QLocale::c());
  }

  void fixup(QString& input) const override {
    bool ok = false;
    const double typed = input.toDouble(&ok);
    if (ok && std::isfinite(typed)) {
      QString bounded = QString::number(std::clamp(typed, bottom(), top()));
      int pos = 0;
      if (validate(bounded, pos) == Acceptable) {
        input = bounded;
        return;
      }
    }
    input = QString::number(edit->value());
  }

private:
  const DoubleEdit* edit;
};

}  // namespace

DoubleEdit::DoubleEdit(double minimum, double maximum, int decimals, double value, QWidget* parent)
    : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  setRange(minimum, maximum, decimals);
  setValue(value);
  connect(this, &QLineEdit::editingFinished, this, &DoubleEdit::editChanged);
}

DoubleEdit::DoubleEdit(QWidget* parent) : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  installValidator(new BoundedDoubleValidator(this));
  setValue(0.0);
  connect(this, &QLineEdit::editingFinished, this, &DoubleEdit::editChanged);
}

void DoubleEdit::setValue(double newValue) {
  // A NaN or an infinity from a preset file is no value: the one in force stays.
  if (!std::isfinite(newValue)) return;
  value_.store(newValue, std::memory_order_relaxed);
  setText(QString::number(newValue));
}

void DoubleEdit::setRange(double minimum, double maximum, int decimals) {
  auto* validator = new BoundedDoubleValidator(this);
  validator->setRange(minimum, maximum, decimals);
  validator->setNotation(QDoubleValidator::StandardNotation);
  installValidator(validator);
  const QString low = QString::number(minimum, 'f', decimals);
  const QString high = QString::number(maximum, 'f', decimals);
  widestText = low.length() > high.length() ? low : high;
  updateGeometry();
}

void DoubleEdit::setDecimals(int decimals) {
  auto* validator = new BoundedDoubleValidator(this);
  validator->setDecimals(decimals);
  installValidator(validator);
  widestText.clear();
  updateGeometry();
}

QSize DoubleEdit::minimumSizeHint() const {
  QSize size = QLineEdit::minimumSizeHint();
  // The base hint holds the frame, the margins and one character, which is left as slack.
  if (!widestText.isEmpty()) size.rwidth() += fontMetrics().horizontalAdvance(widestText);
  return size;
}

void DoubleEdit::installValidator(QDoubleValidator* validator) {
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
