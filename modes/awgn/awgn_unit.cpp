// SPDX-License-Identifier: MIT
// The AWGN mode as a unit: view, generator and remote rows 120 to 127.
#include "modes/awgn/awgn_unit.h"

#include "modes/awgn/awgn_builder.h"
#include "modes/awgn/mode_view_awgn.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

namespace {

// Runs on the streaming thread. The noise is the mode's own: the impairments' channel filter
// and noise are not laid over it in the build.
void generateAWGN(const ModeViewAWGN& view, ModeHost& host) {
  const LongWaveform wave = buildAwgn(view.settings());
  if (wave.samples.empty()) return;
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.submitWaveform(wave.samples.data(), wave.samples.size(), false);
}

void handleAwgnRow(ModeViewAWGN& view, ModeHost& host, Scpi& command, int row) {
  int number = 0;
  double value = 0.0;
  switch (row) {
    case 120:
    case 121: handleModeStateRow(host, command, view.modeIndex(), row == 121); break;
    case 122:
      if (command.nextDouble(value)) view.setBandwidth(value);
      break;
    case 123: addDoubleResponse(command, view.bandwidth()); break;
    // Whole seconds: 0 lands on the shortest record, 1 or more on the longest.
    case 124:
      if (command.nextInt(number)) view.setLength(number);
      break;
    case 125: addDoubleResponse(command, view.length()); break;
    case 126:
      if (command.nextInt(number)) view.setSeed(number);
      break;
    case 127: addIntResponse(command, view.seed()); break;
    default: break;
  }
}

}  // namespace

void registerAwgnMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewAWGN, generateAWGN, 120, 127, handleAwgnRow);
}
