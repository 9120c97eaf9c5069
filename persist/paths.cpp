// SPDX-License-Identifier: MIT
// Data directory and the paths of the files the application keeps there.
#include "persist/paths.h"

#include "persist/settings_file.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {
const char* defaultDirectoryKey = "DefaultDataSaveDirectory";
}

QString dataDirectory() {
  QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Tarnwick/";
  QDir().mkdir(path);
  path += "krt40/";
  QDir().mkdir(path);
  return path;
}

QString powerOnPresetPath() { return dataDirectory() + "PowerOnPreset.ini"; }

QString preferencesPath() { return dataDirectory() + "Preferences.ini"; }

QString quickPresetPath(int n) { return dataDirectory() + "Preset" + QString::number(n) + ".ini"; }

QString defaultDataDirectory() {
  if (!settingsFileReadable(preferencesPath())) return dataDirectory();
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  return settings.value(defaultDirectoryKey, dataDirectory()).toString();
}

void setDefaultDataDirectory(const QString& path) {
  if (!settingsFileWritable(preferencesPath())) return;
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.setValue(defaultDirectoryKey, path);
}

void rememberDirectoryOf(const QString& file) {
  setDefaultDataDirectory(QFileInfo(file).absoluteDir().absolutePath());
}
