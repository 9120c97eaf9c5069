// SPDX-License-Identifier: MIT
// Where the application keeps its files: the per-user data directory and the files in it.
#pragma once

#include <QString>

// Documents location + "/Tarnwick/krt40/", with its closing slash; both levels are made on
// every call so that a first run or a deleted folder needs no special path.
QString dataDirectory();
QString powerOnPresetPath();
QString preferencesPath();
QString quickPresetPath(int n);

// The directory file dialogs start in ("DefaultDataSaveDirectory"); the data directory if unset.
QString defaultDataDirectory();
void setDefaultDataDirectory(const QString& path);
// Remembers the absolute directory of a file chosen through a dialog of the caller's own.
void rememberDirectoryOf(const QString& file);
