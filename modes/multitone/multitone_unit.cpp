// SPDX-License-Identifier: MIT
// The multitone mode as a unit: view, generator and remote rows 80 to 91.
#include "modes/multitone/multitone_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "modes/multitone/mode_view_multitone.h"
#include "modes/multitone/multitone_builder.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

namespace {

// Runs on the streaming thread. A comb of more than 200 tones brackets its build with the
// progress dialog; the signals are queued to the GUI thread, which may be waiting in a join.
void generateMultitone(const ModeViewMultitone& view, ModeHost& host) {
  const MultitoneSettings settings = view.settings();
  MultitoneProgress progress;
  progress.show = [&host] { host.showProgress(); };
  progress.percent = [&host](int percent) { host.setProgress(percent); };
  progress.hide = [&host] { host.hideProgress(); };
  progress.keepGoing = [&host] { return host.isStreaming(); };
  const Waveform wave = buildMultitone(settings, progress);
  // Nothing to play for settings only a preset can hold (no tones, no spacing, a buffer
  // beyond memory) or for a build given up because the settings changed.
  if (wave.samples.empty()) return;
  // With every tone in the notch the correction is infinite: the device refuses that level and
  // keeps its own, and the zeros play silently.
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void handleMultitoneRow(ModeViewMultitone& view, ModeHost& host, Scpi& command, int row) {
  int number = 0;
  double hertz = 0.0;
  switch (row) {
    case 80:
    case 81: handleModeStateRow(host, command, view.modeIndex(), row == 81); break;
    case 82:
      if (readScpiWord(command, scpiWords::multitonePhase, number))
        view.setPhase(static_cast<MultiTonePhase>(number));
      break;
    case 83: command.addResponse(scpiWordText(scpiWords::multitonePhase, view.phase())); break;
    case 84:
      if (command.nextInt(number)) view.setPhaseSeed(number);
      break;
    case 85: addIntResponse(command, view.phaseSeed()); break;
    case 86:
      if (command.nextInt(number)) view.setToneCount(number);
      break;
    case 87: addIntResponse(command, view.toneCount()); break;
    case 88:
      if (command.nextFrequency(hertz)) view.setFreqSpacing(hertz);
      break;
    case 89: addDoubleResponse(command, view.freqSpacing()); break;
    case 90:
      if (command.nextFrequency(hertz)) view.setNotchWidth(hertz);
      break;
    case 91: addDoubleResponse(command, view.notchWidth()); break;
    default: break;
  }
}

}  // namespace

void registerMultitoneMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewMultitone, generateMultitone, 80, 91, handleMultitoneRow);
}
