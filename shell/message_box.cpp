// SPDX-License-Identifier: MIT
// Warning boxes and their replaceable presenter.
#include "shell/message_box.h"

#include <QGuiApplication>
#include <QMessageBox>

#include <cstdio>

namespace {

void defaultPresenter(QWidget* parent, const QString& title, const QString& text) {
  if (QGuiApplication::platformName() == "offscreen") {
    std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(text));
    return;
  }
  QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, parent);
  box.exec();
}

WarningPresenter& presenter() {
  static WarningPresenter current;
  return current;
}

}  // namespace

void showWarning(QWidget* parent, const QString& title, const QString& text) {
  if (presenter())
    presenter()(parent, title, text);
  else
    defaultPresenter(parent, title, text);
}

WarningPresenter setWarningPresenter(WarningPresenter replacement) {
  WarningPresenter previous = presenter();
  presenter() = std::move(replacement);
  return previous;
}
