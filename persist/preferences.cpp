// SPDX-License-Identifier: MIT
// Load and save of the application preferences in "Preferences.ini".
#include "persist/preferences.h"

#include "krt/krt_api.h"
#include "krt/krt_ext.h"
#include "persist/paths.h"
#include "persist/settings_file.h"

#include <QSettings>

#include <cmath>
#include <cstdio>
#include <cstdlib>

Preferences preferences;

namespace {

const char* const kBackendNames[] = {"Simulated", "SoapySDR"};

// The backend a name stands for, -1 for none; case does not matter ("soapy" is short for it).
int backendNamed(const QString& name) {
  const QString n = name.trimmed().toLower();
  if (n == "simulated" || n == "sim") return KRT_BACKEND_SIMULATED;
  if (n == "soapysdr" || n == "soapy") return KRT_BACKEND_SOAPYSDR;
  return -1;
}

void loadLevelCalibration(QSettings& settings) {
  settings.beginGroup("LevelCalibration");
  for (const QString& key : settings.childKeys()) {
    bool serialOk = false;
    bool valueOk = false;
    const int serial = key.toInt(&serialOk);
    const double offsetDb = settings.value(key).toDouble(&valueOk);
    if (serialOk && valueOk && std::isfinite(offsetDb)) {
      preferences.levelCalibration[serial] = offsetDb;
      krtSetLevelCalibration(serial, offsetDb);
    }
  }
  settings.endGroup();
}

}  // namespace

void loadPreferences() {
  if (!settingsFileReadable(preferencesPath())) {
    krtEnablePowerSavingCpuMode(preferences.powerSavingCpuMode ? 1 : 0);
    applyDeviceBackend();
    return;
  }
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.beginGroup("Preferences");
  preferences.scpiEnabled = settings.value("SCPIEnabled", preferences.scpiEnabled).toBool();
  preferences.scpiPort = settings.value("SCPIPort", preferences.scpiPort).toInt();
  preferences.powerSavingCpuMode =
      settings.value("PowerSavingCpuModeEnabled", preferences.powerSavingCpuMode).toBool();
  krtEnablePowerSavingCpuMode(preferences.powerSavingCpuMode ? 1 : 0);
  const QString backend = settings.value("DeviceBackend", preferences.deviceBackend).toString();
  if (backendNamed(backend) >= 0) preferences.deviceBackend = kBackendNames[backendNamed(backend)];
  settings.endGroup();
  loadLevelCalibration(settings);
  applyDeviceBackend();
}

void savePreferences() {
  if (!settingsFileWritable(preferencesPath())) return;
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.beginGroup("Preferences");
  settings.setValue("SCPIEnabled", preferences.scpiEnabled);
  settings.setValue("SCPIPort", preferences.scpiPort);
  settings.setValue("PowerSavingCpuModeEnabled", preferences.powerSavingCpuMode);
  settings.setValue("DeviceBackend", preferences.deviceBackend);
  settings.endGroup();
  settings.beginGroup("LevelCalibration");
  for (auto it = preferences.levelCalibration.cbegin(); it != preferences.levelCalibration.cend();
       ++it)
    settings.setValue(QString::number(it.key()), it.value());
  settings.endGroup();
}

void applyDeviceBackend() {
  static bool toldAbsent = false;
  if (!toldAbsent && !krtBackendAvailable(KRT_BACKEND_SOAPYSDR)) {
    toldAbsent = true;
    std::fprintf(stderr, "krt40: built without SoapySDR, only simulated devices are available\n");
  }
  int backend = backendNamed(preferences.deviceBackend);
  const char* forced = std::getenv("KRT40_BACKEND");
  if (forced && *forced) {
    if (backendNamed(forced) >= 0)
      backend = backendNamed(forced);
    else
      std::fprintf(stderr, "krt40: KRT40_BACKEND=%s is neither \"simulated\" nor \"soapysdr\"\n",
                   forced);
  }
  if (backend < 0) backend = KRT_BACKEND_SIMULATED;
  if (krtSelectBackend(backend) != 0) krtSelectBackend(KRT_BACKEND_SIMULATED);
}
