// SPDX-License-Identifier: MIT
// Warning boxes and their replaceable presenter.
#include "shell/message_box.h"

#include <QGuiApplication>
#include <QMessageBox>

#include <cstdio>

namespace {

void defaultPresenter(QMessageBox::Icon icon, QWidget* parent, const QString& title,
                      const QString& text) {
  if (QGuiApplication::platformName() == "offscreen") {
    std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(text));
    return;
  }
  QMessageBox box(icon, title, text, QMessageBox::Ok, parent);
  box.exec();
}

WarningPresenter& presenter() {
  static WarningPresenter current;
  return current;
}

void present(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text) {
  if (presenter())
    presenter()(parent, title, text);
  else
    defaultPresenter(icon, parent, title, text);
}

}  // namespace

void showWarning(QWidget* parent, const QString& title, const QString& text) {
  present(QMessageBox::Warning, parent, title, text);
}

void showInformation(QWidget* parent, const QString& title, const QString& text) {
  present(QMessageBox::Information, parent, title, text);
}

WarningPresenter setWarningPresenter(WarningPresenter replacement) {
  WarningPresenter previous = presenter();
  presenter() = std::move(replacement);
  return previous;
}
