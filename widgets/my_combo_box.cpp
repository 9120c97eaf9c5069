// SPDX-License-Identifier: MIT
// Combo box of the instrument's forms; a class of its own so the style sheet can address it.
#include "widgets/my_combo_box.h"

MyComboBox::MyComboBox(QWidget* parent) : QComboBox(parent) {}
