// SPDX-License-Identifier: MIT
// Application preferences that outlive a session without being part of a preset.
#pragma once

#include <QMap>
#include <QString>

struct Preferences {
  bool scpiEnabled = true;
  int scpiPort = 5024;
  bool powerSavingCpuMode = true;
  // "Simulated" or "SoapySDR": whose devices the program lists and opens.
  QString deviceBackend = "Simulated";
  // Level in dBm of a full-scale sample at gain 0 dB, by SoapySDR device serial number.
  QMap<int, double> levelCalibration;
};

// The one instance; loaded before the window is built and saved at process exit.
extern Preferences preferences;

// Reads group "Preferences" of "Preferences.ini" (current values as defaults) and hands the
// power-saving mode, the backend and the calibrations to the device library.
void loadPreferences();
void savePreferences();

// Hands preferences.deviceBackend to the device library, unless KRT40_BACKEND ("simulated" or
// "soapysdr") overrides it for this process. A backend this build lacks leaves the simulated
// devices in use, said on standard error.
void applyDeviceBackend();
