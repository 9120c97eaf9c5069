// SPDX-License-Identifier: MIT
// Form layout of the mode views.
#pragma once

#include <QFormLayout>

class MyFormLayout : public QFormLayout {
  Q_OBJECT

public:
  explicit MyFormLayout(QWidget* parent = nullptr);

  // Intended width of the field column; nothing reads it.
  int fieldWidth = 320;
};
