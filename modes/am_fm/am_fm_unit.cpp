// SPDX-License-Identifier: MIT
// The AM and FM modes as units: views, generators and remote rows 56 to 71.
#include "modes/am_fm/am_fm_unit.h"

#include "modes/am_fm/am_fm_builder.h"
#include "modes/am_fm/mode_view_am.h"
#include "modes/am_fm/mode_view_fm.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

namespace {

// The level is not corrected: the envelope's mean sits below the panel's level.
void generateAM(const ModeViewAM& view, ModeHost& host) {
  const Waveform wave = buildAm(view.settings());
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  if (wave.samples.empty()) return;  // unknown shape: retuned, nothing submitted
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void generateFM(const ModeViewFM& view, ModeHost& host) {
  const Waveform wave = buildFm(view.settings());
  if (wave.samples.empty()) return;  // unknown shape: neither retuned nor submitted
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), false);
}

void handleAmRow(ModeViewAM& view, ModeHost& host, Scpi& command, int row) {
  double value = 0.0;
  int word = 0;
  switch (row) {
    case 56:
    case 57: handleModeStateRow(host, command, view.modeIndex(), row == 57); break;
    case 58:
      if (command.nextFrequency(value)) view.setRate(value);
      break;
    case 59: addDoubleResponse(command, view.rate()); break;
    case 60:
      if (readScpiWord(command, scpiWords::modulationShape, word))
        view.setShape(static_cast<ModShape>(word));
      break;
    case 61: command.addResponse(scpiWordText(scpiWords::modulationShape, view.shape())); break;
    case 62:
      if (command.nextDouble(value)) view.setDepth(value);
      break;
    case 63: addDoubleResponse(command, view.depth()); break;
    default: break;
  }
}

void handleFmRow(ModeViewFM& view, ModeHost& host, Scpi& command, int row) {
  double value = 0.0;
  int word = 0;
  switch (row) {
    case 64:
    case 65: handleModeStateRow(host, command, view.modeIndex(), row == 65); break;
    case 66:
      if (command.nextFrequency(value)) view.setRate(value);
      break;
    case 67: addDoubleResponse(command, view.rate()); break;
    case 68:
      if (command.nextFrequency(value)) view.setDeviation(value);
      break;
    case 69: addDoubleResponse(command, view.deviation()); break;
    case 70:
      if (readScpiWord(command, scpiWords::modulationShape, word))
        view.setShape(static_cast<ModShape>(word));
      break;
    case 71: command.addResponse(scpiWordText(scpiWords::modulationShape, view.shape())); break;
    default: break;
  }
}

}  // namespace

void registerAmFmModes(ModeRegistry& registry) {
  registry.addMode(new ModeViewAM, generateAM, 56, 63, handleAmRow);
  registry.addMode(new ModeViewFM, generateFM, 64, 71, handleFmRow);
}
