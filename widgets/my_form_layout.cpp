// SPDX-License-Identifier: MIT
// Form layout of the mode views.
#include "widgets/my_form_layout.h"

MyFormLayout::MyFormLayout(QWidget* parent) : QFormLayout(parent) {}
