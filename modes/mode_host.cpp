// SPDX-License-Identifier: MIT
// What the instrument offers a mode unit.
#include "modes/mode_host.h"

#include "remote/scpi.h"
#include "remote/scpi_words.h"

void handleModeStateRow(ModeHost& host, Scpi& command, int modeIndex, bool query) {
  if (query) {
    addBoolResponse(command, host.currentMode() == modeIndex);
    return;
  }
  bool on = false;
  if (!command.nextBool(on) || !on || host.currentMode() == modeIndex) return;
  host.selectMode(modeIndex);
}
