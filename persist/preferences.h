// SPDX-License-Identifier: MIT
// Application preferences that outlive a session without being part of a preset.
#pragma once

struct Preferences {
  bool scpiEnabled = true;
  int scpiPort = 5024;
  bool powerSavingCpuMode = true;
};

// The one instance; loaded before the window is built and saved at process exit.
extern Preferences preferences;

// Reads group "Preferences" of "Preferences.ini" (current values as defaults) and hands the
// power-saving mode to the device library.
void loadPreferences();
void savePreferences();
