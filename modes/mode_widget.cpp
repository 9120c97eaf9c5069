// SPDX-License-Identifier: MIT
// Base of the mode views: a form of controls that is also the store the generator reads.
#include "modes/mode_widget.h"

#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QSpacerItem>

ModeWidget::ModeWidget(const QString& name, int modeIndex, QWidget* parent, bool addSpacer)
    : QWidget(parent),
      formLayout(new MyFormLayout()),
      modeIndex_(modeIndex),
      modeName_(name),
      enabledCheck_(new QCheckBox(this)) {
  if (!addSpacer) return;
  auto* row = new QHBoxLayout();
  row->addLayout(formLayout);
  row->addItem(new QSpacerItem(10, 10, QSizePolicy::Expanding, QSizePolicy::Minimum));
  setLayout(row);
}

ModeWidget::~ModeWidget() {
  // A view built without the spacer may never have installed its form.
  if (!formLayout->parent()) delete formLayout;
}
