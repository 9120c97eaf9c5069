// SPDX-License-Identifier: MIT
// File dialogs that start in, and remember, the last data directory.
#pragma once

#include <QString>
#include <QStringList>

class QWidget;

// Each starts in defaultDataDirectory(); a chosen name is remembered (its full path, from
// which the next dialog starts in its directory) and returned; a cancel returns a null string.
QString openFileName(const QString& caption, const QString& filter, QWidget* parent);
QString saveFileName(const QString& caption, const QString& filter, QWidget* parent);
QStringList openFileNames(const QString& caption, const QString& filter, QWidget* parent);
