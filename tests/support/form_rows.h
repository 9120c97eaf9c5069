// SPDX-License-Identifier: MIT
// A view's form as text, for one comparison with the labels, fields and items it must show.
#pragma once

#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"

#include <QFormLayout>
#include <QLabel>
#include <QStringList>

// "label=field class" of each form row, then "text=data" of each combo box item.
inline QStringList formRows(QWidget& view) {
  QStringList out;
  auto* form = view.findChild<QFormLayout*>();
  for (int r = 0; form && r < form->rowCount(); ++r) {
    QLayoutItem* labelItem = form->itemAt(r, QFormLayout::LabelRole);
    auto* label = labelItem ? qobject_cast<QLabel*>(labelItem->widget()) : nullptr;
    QWidget* field = form->itemAt(r, QFormLayout::FieldRole)->widget();
    out << (label ? label->text() : QString()) + "=" + field->metaObject()->className();
  }
  for (MyComboBox* combo : view.findChildren<MyComboBox*>())
    for (int i = 0; i < combo->count(); ++i)
      out << combo->itemText(i) + "=" + combo->itemData(i).toString();
  return out;
}
