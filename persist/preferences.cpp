// SPDX-License-Identifier: MIT
// Load and save of the application preferences in "Preferences.ini".
#include "persist/preferences.h"

#include "krt/krt_api.h"
#include "persist/paths.h"
#include "persist/settings_file.h"

#include <QSettings>

Preferences preferences;

void loadPreferences() {
  if (!settingsFileReadable(preferencesPath())) {
    krtEnablePowerSavingCpuMode(preferences.powerSavingCpuMode ? 1 : 0);
    return;
  }
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.beginGroup("Preferences");
  preferences.scpiEnabled = settings.value("SCPIEnabled", preferences.scpiEnabled).toBool();
  preferences.scpiPort = settings.value("SCPIPort", preferences.scpiPort).toInt();
  preferences.powerSavingCpuMode =
      settings.value("PowerSavingCpuModeEnabled", preferences.powerSavingCpuMode).toBool();
  krtEnablePowerSavingCpuMode(preferences.powerSavingCpuMode ? 1 : 0);
  settings.endGroup();
}

void savePreferences() {
  if (!settingsFileWritable(preferencesPath())) return;
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.beginGroup("Preferences");
  settings.setValue("SCPIEnabled", preferences.scpiEnabled);
  settings.setValue("SCPIPort", preferences.scpiPort);
  settings.setValue("PowerSavingCpuModeEnabled", preferences.powerSavingCpuMode);
  settings.endGroup();
}
