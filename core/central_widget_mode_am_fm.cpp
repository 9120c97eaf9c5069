// SPDX-License-Identifier: MIT
// AM and FM: views, generators and remote rows 56 to 71.
#include "core/central_widget.h"

#include "modes/am_fm_builder.h"
#include "modes/mode_view_am.h"
#include "modes/mode_view_fm.h"
#include "modes/my_stacked_widget.h"
#include "remote/scpi_words.h"

void CentralWidget::addAmFmViews() {
  modeViewAM = new ModeViewAM(modeStack);
  addMode(modeViewAM);
  modeViewFM = new ModeViewFM(modeStack);
  addMode(modeViewFM);
}

// The level is not corrected: the envelope's mean sits below the panel's level.
void CentralWidget::generateAM() {
  const Waveform wave = buildAm(modeViewAM->settings());
  retuneForMode(wave.sampleRate, wave.levelOffsetDb);
  if (wave.samples.empty()) return;  // unknown shape: retuned, nothing submitted
  submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void CentralWidget::generateFM() {
  const Waveform wave = buildFm(modeViewFM->settings());
  if (wave.samples.empty()) return;  // unknown shape: neither retuned nor submitted
  retuneForMode(wave.sampleRate, wave.levelOffsetDb);
  submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void CentralWidget::handleAmFmRows(Scpi& command, int id) {
  double value = 0.0;
  int word = 0;
  switch (id) {
    case 56:
    case 57: handleModeStateRow(command, 1, id == 57); break;
    case 58:
      if (command.nextFrequency(value)) modeViewAM->setRate(value);
      break;
    case 59: addDoubleResponse(command, modeViewAM->rate()); break;
    case 60:
      if (readScpiWord(command, scpiWords::modulationShape, word))
        modeViewAM->setShape(static_cast<ModShape>(word));
      break;
    case 61:
      command.addResponse(scpiWordText(scpiWords::modulationShape, modeViewAM->shape()));
      break;
    case 62:
      if (command.nextDouble(value)) modeViewAM->setDepth(value);
      break;
    case 63: addDoubleResponse(command, modeViewAM->depth()); break;
    case 64:
    case 65: handleModeStateRow(command, 2, id == 65); break;
    case 66:
      if (command.nextFrequency(value)) modeViewFM->setRate(value);
      break;
    case 67: addDoubleResponse(command, modeViewFM->rate()); break;
    case 68:
      if (command.nextFrequency(value)) modeViewFM->setDeviation(value);
      break;
    case 69: addDoubleResponse(command, modeViewFM->deviation()); break;
    case 70:
      if (readScpiWord(command, scpiWords::modulationShape, word))
        modeViewFM->setShape(static_cast<ModShape>(word));
      break;
    case 71:
      command.addResponse(scpiWordText(scpiWords::modulationShape, modeViewFM->shape()));
      break;
    default: break;
  }
}
