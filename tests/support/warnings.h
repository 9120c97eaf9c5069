// SPDX-License-Identifier: MIT
// Warnings of the message-box layer collected in tests instead of shown.
#pragma once

#include "shell/message_box.h"

#include <QStringList>

// Collects the warnings as "title: text" while it lives.
struct Warnings {
  Warnings() {
    previous = setWarningPresenter([this](QWidget*, const QString& title, const QString& text) {
      shown << title + ": " + text;
    });
  }
  ~Warnings() { setWarningPresenter(previous); }
  QStringList shown;
  WarningPresenter previous;
};
