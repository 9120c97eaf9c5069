// SPDX-License-Identifier: MIT
// The pulse mode as a unit: view, generator and remote rows 72 to 79.
#include "modes/pulse/pulse_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "modes/pulse/mode_view_pulse.h"
#include "modes/pulse/pulse_builder.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

namespace {

// The level is that of the pulse: no correction for the duty cycle.
void generatePulse(const ModeViewPulse& view, ModeHost& host) {
  const PulseSettings settings = view.settings();
  const LongWaveform wave = buildPulse(settings);
  if (wave.samples.empty()) return;
  host.retune(wave.sampleRate);
  host.submitWaveform(wave.samples.data(), wave.samples.size(), settings.trigger == TriggerSingle);
}

void handlePulseRow(ModeViewPulse& view, ModeHost& host, Scpi& command, int row) {
  double seconds = 0.0;
  int word = 0;
  switch (row) {
    case 72:
    case 73: handleModeStateRow(host, command, view.modeIndex(), row == 73); break;
    case 74:
      if (readScpiWord(command, scpiWords::triggerType, word))
        view.setTriggerType(static_cast<TriggerType>(word));
      break;
    case 75: command.addResponse(scpiWordText(scpiWords::triggerType, view.triggerType())); break;
    case 76:
      if (command.nextTime(seconds)) view.setPulseWidth(seconds);
      break;
    case 77: addDoubleResponse(command, view.pulseWidth()); break;
    case 78:
      if (command.nextTime(seconds)) view.setPulsePeriod(seconds);
      break;
    case 79: addDoubleResponse(command, view.pulsePeriod()); break;
    default: break;
  }
}

}  // namespace

void registerPulseMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewPulse, generatePulse, 72, 79, handlePulseRow);
}
