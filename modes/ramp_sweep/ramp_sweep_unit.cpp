// SPDX-License-Identifier: MIT
// The ramp sweep as a unit: view, generator and remote rows 110 to 119.
#include "modes/ramp_sweep/ramp_sweep_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "modes/ramp_sweep/mode_view_ramp_sweep.h"
#include "modes/ramp_sweep/ramp_sweep_builder.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

namespace {

// The chirp has magnitude 1.0: the level is the panel's.
void generateRampSweep(const ModeViewRampSweep& view, ModeHost& host) {
  const RampSweepSettings settings = view.settings();
  const LongWaveform wave = buildRampSweep(settings, &host.runFlag());
  if (wave.samples.empty()) return;  // stopped during the build
  host.retune(wave.sampleRate);
  host.submitWaveform(wave.samples.data(), wave.samples.size(), settings.trigger == TriggerSingle);
}

// Row 119 has the text of row 118, which always matches first: the period has no query.
void handleRampSweepRow(ModeViewRampSweep& view, ModeHost& host, Scpi& command, int row) {
  double value = 0.0;
  int word = 0;
  switch (row) {
    case 110:
    case 111: handleModeStateRow(host, command, view.modeIndex(), row == 111); break;
    case 112:
      if (readScpiWord(command, scpiWords::triggerType, word))
        view.setTriggerType(static_cast<TriggerType>(word));
      break;
    case 113: command.addResponse(scpiWordText(scpiWords::triggerType, view.triggerType())); break;
    case 114:
      if (command.nextFrequency(value)) view.setSpan(value);
      break;
    case 115: addDoubleResponse(command, view.span()); break;
    case 116:
      if (command.nextTime(value)) view.setSweepTime(value);
      break;
    case 117: addDoubleResponse(command, view.sweepTime()); break;
    case 118:
      if (command.nextTime(value)) view.setSweepPeriod(value);
      break;
    default: break;
  }
}

}  // namespace

void registerRampSweepMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewRampSweep, generateRampSweep, 110, 119, handleRampSweepRow);
}
