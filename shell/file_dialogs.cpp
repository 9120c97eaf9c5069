// SPDX-License-Identifier: MIT
// File dialogs that remember where the user last was.
#include "shell/file_dialogs.h"

#include "persist/paths.h"

#include <QFileDialog>
#include <QFileInfo>

namespace {

QString remembered(const QString& name) {
  if (!name.isNull()) setDefaultDataDirectory(QFileInfo(name).absoluteFilePath());
  return name;
}

}  // namespace

QString openFileName(const QString& caption, const QString& filter, QWidget* parent) {
  return remembered(QFileDialog::getOpenFileName(parent, caption, defaultDataDirectory(), filter));
}

QString saveFileName(const QString& caption, const QString& filter, QWidget* parent) {
  return remembered(QFileDialog::getSaveFileName(parent, caption, defaultDataDirectory(), filter));
}

QStringList openFileNames(const QString& caption, const QString& filter, QWidget* parent) {
  QStringList names =
      QFileDialog::getOpenFileNames(parent, caption, defaultDataDirectory(), filter);
  if (!names.isEmpty()) remembered(names.first());
  return names;
}
