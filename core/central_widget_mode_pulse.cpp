// SPDX-License-Identifier: MIT
// Pulse: view, generator and remote rows 72 to 79.
#include "core/central_widget.h"

#include "modes/mode_view_pulse.h"
#include "modes/pulse_builder.h"
#include "remote/scpi_words.h"

void CentralWidget::addPulseView() {
  modeViewPulse = new ModeViewPulse(this);
  addMode(modeViewPulse);
}

// The level is that of the pulse: no correction for the duty cycle.
void CentralWidget::generatePulse() {
  if (!modeViewPulse) return;
  const PulseSettings settings = modeViewPulse->settings();
  const LongWaveform wave = buildPulse(settings);
  if (wave.samples.empty()) return;
  retuneForMode(wave.sampleRate);
  submitWaveform(wave.samples.data(), wave.samples.size(), settings.trigger == TriggerSingle);
}

void CentralWidget::handlePulseRows(Scpi& command, int id) {
  if (id == 72 || id == 73) {
    handleModeStateRow(command, 3, id == 73);
    return;
  }
  if (!modeViewPulse) return;
  double seconds = 0.0;
  int word = 0;
  switch (id) {
    case 74:
      if (readScpiWord(command, scpiWords::triggerType, word))
        modeViewPulse->setTriggerType(static_cast<TriggerType>(word));
      break;
    case 75:
      command.addResponse(scpiWordText(scpiWords::triggerType, modeViewPulse->triggerType()));
      break;
    case 76:
      if (command.nextTime(seconds)) modeViewPulse->setPulseWidth(seconds);
      break;
    case 77: addDoubleResponse(command, modeViewPulse->pulseWidth()); break;
    case 78:
      if (command.nextTime(seconds)) modeViewPulse->setPulsePeriod(seconds);
      break;
    case 79: addDoubleResponse(command, modeViewPulse->pulsePeriod()); break;
    default: break;
  }
}
