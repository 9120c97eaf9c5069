// SPDX-License-Identifier: MIT
// Application entry: preferences around the process, one main window.
#include "core/main_window.h"
#include "krt/krt_ext.h"
#include "persist/preferences.h"
#include "shell/error_queue.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>

namespace {

// Preferences are read before the window exists and written after it is gone.
struct PreferencesLifetime {
  PreferencesLifetime() { loadPreferences(); }
  ~PreferencesLifetime() { savePreferences(); }
};

// Without a display the instrument still serves remote clients: run on the offscreen platform.
void chooseHeadlessPlatform() {
  if (std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM"))
    return;
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  std::fprintf(stderr, "krt40: no display found, running headless (offscreen platform)\n");
}

}  // namespace

int main(int argc, char** argv) {
  chooseHeadlessPlatform();
  QApplication app(argc, argv);
  krtSetMessageHandler(&putDeviceMessage);
  static PreferencesLifetime preferencesLifetime;
  int result = 0;
  {
    MainWindow window;
    // A remote client may close the instrument while the first device still opens.
    if (!window.closeRequested()) {
      window.show();
      result = app.exec();
    }
  }
  return result;
}
