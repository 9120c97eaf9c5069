// SPDX-License-Identifier: MIT
// Multitone: view, generator and remote rows.
#include "core/central_widget.h"

#include "modes/mode_view_multitone.h"
#include "modes/multitone_builder.h"
#include "remote/scpi_words.h"

void CentralWidget::addMultitoneView() {
  modeViewMultitone = new ModeViewMultitone(this);
  addMode(modeViewMultitone);
}

// Runs on the streaming thread. A comb of more than 200 tones brackets its build with the
// progress dialog; the signals are queued to the GUI thread, which may be waiting in a join.
void CentralWidget::generateMultitone() {
  if (!modeViewMultitone) return;
  const MultitoneSettings settings = modeViewMultitone->settings();
  MultitoneProgress progress;
  progress.show = [this] { emit showProgressDialogSignal(); };
  progress.percent = [this](int percent) { emit setProgressPercentSignal(percent); };
  progress.hide = [this] { emit hideProgressDialogSignal(); };
  progress.keepGoing = [this] { return streamEngine().isStreaming(); };
  const Waveform wave = buildMultitone(settings, progress);
  // Nothing to play for settings only a preset can hold (no tones, no spacing, a buffer
  // beyond memory) or for a build given up because the settings changed.
  if (wave.samples.empty()) return;
  // With every tone in the notch the correction is infinite: the device refuses that level and
  // keeps its own, and the zeros play silently.
  retuneForMode(wave.sampleRate, wave.levelOffsetDb);
  submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void CentralWidget::handleMultitoneRows(Scpi& command, int id) {
  ModeViewMultitone* view = modeViewMultitone;
  if (!view) return;
  int number = 0;
  double hertz = 0.0;
  switch (id) {
    case 80:
    case 81: handleModeStateRow(command, view->modeIndex(), id == 81); break;
    case 82:
      if (readScpiWord(command, scpiWords::multitonePhase, number))
        view->setPhase(static_cast<MultiTonePhase>(number));
      break;
    case 83: command.addResponse(scpiWordText(scpiWords::multitonePhase, view->phase())); break;
    case 84:
      if (command.nextInt(number)) view->setPhaseSeed(number);
      break;
    case 85: addIntResponse(command, view->phaseSeed()); break;
    case 86:
      if (command.nextInt(number)) view->setToneCount(number);
      break;
    case 87: addIntResponse(command, view->toneCount()); break;
    case 88:
      if (command.nextFrequency(hertz)) view->setFreqSpacing(hertz);
      break;
    case 89: addDoubleResponse(command, view->freqSpacing()); break;
    case 90:
      if (command.nextFrequency(hertz)) view->setNotchWidth(hertz);
      break;
    case 91: addDoubleResponse(command, view->notchWidth()); break;
    default: break;
  }
}
