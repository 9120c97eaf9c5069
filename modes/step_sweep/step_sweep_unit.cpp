// SPDX-License-Identifier: MIT
// The step sweep as a unit: view, its own generator loop and remote rows 92 to 109.
#include "modes/step_sweep/step_sweep_unit.h"

#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "modes/step_sweep/mode_view_step_sweep.h"
#include "modes/step_sweep/step_sweep_plan.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace {

enum class SweepEnd { Completed, Stopped, DeviceLost };

void pause() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

// Feeds one dwell in pieces of the constant carrier, looking at the run flag before each piece
// and at the USB status after it.
SweepEnd feedDwell(ModeHost& host, int64_t dwellSamples, const std::vector<Sample>& carrier) {
  for (int64_t fed = 0; fed < dwellSamples; fed += stepSweepPieceSamples) {
    if (!host.isStreaming()) return SweepEnd::Stopped;
    host.submitIQ(carrier.data(),
                  static_cast<int>(std::min<int64_t>(stepSweepPieceSamples, dwellSamples - fed)));
    if (host.connectionLost()) return SweepEnd::DeviceLost;
  }
  return SweepEnd::Completed;
}

// One pass over the points. Frequency and level go straight to the device, without the
// corrections of a retune.
SweepEnd playSweep(ModeHost& host, const StepSweepPlan& plan, const std::vector<Sample>& carrier) {
  for (int i = 0; i < plan.points; ++i) {
    host.setDeviceFrequency(plan.frequencyAt(i));
    host.setDeviceLevel(plan.levelAt(i));
    const SweepEnd end = feedDwell(host, plan.dwellSamples, carrier);
    if (end != SweepEnd::Completed) return end;
    if (!host.isStreaming()) return SweepEnd::Stopped;
  }
  return SweepEnd::Completed;
}

// Retunes the device itself from point to point and feeds it the same constant carrier while
// it dwells. A stop takes effect within one piece (10 ms at 5e7).
void generateStepSweep(const ModeViewStepSweep& view, ModeHost& host) {
  const StepSweepPlan plan = planStepSweep(view.settings(), host.level());
  if (plan.dwellSamples < 1) return;  // without a dwell the loop would retune unpaced
  const std::vector<Sample> carrier(stepSweepPieceSamples, Sample(1.0f, 0.0f));
  host.setDeviceSampleRate(stepSweepSampleRate);
  host.setOutputReady();
  while (host.isStreaming()) {
    // Triggers during a sweep collapse into one: the request is cleared only here.
    if (plan.singleShot && !host.takeTriggerRequest()) {
      pause();
      continue;
    }
    if (playSweep(host, plan, carrier) != SweepEnd::Completed) return;
    if (plan.singleShot) {
      host.flushAndWait();
      pause();
    }
  }
}

void handleStepSweepRow(ModeViewStepSweep& view, ModeHost& host, Scpi& command, int row) {
  double value = 0.0;
  int number = 0;
  switch (row) {
    case 92:
    case 93: handleModeStateRow(host, command, view.modeIndex(), row == 93); break;
    case 94:
      if (readScpiWord(command, scpiWords::triggerType, number))
        view.setTriggerType(static_cast<TriggerType>(number));
      break;
    case 95: command.addResponse(scpiWordText(scpiWords::triggerType, view.triggerType())); break;
    case 96:
      if (readScpiWord(command, scpiWords::stepSweepType, number))
        view.setSweepType(static_cast<StepSweepType>(number));
      break;
    case 97: command.addResponse(scpiWordText(scpiWords::stepSweepType, view.sweepType())); break;
    case 98:
      if (command.nextFrequency(value)) view.setStartFreq(value);
      break;
    case 99: addDoubleResponse(command, view.startFreq()); break;
    case 100:
      if (command.nextFrequency(value)) view.setStopFreq(value);
      break;
    case 101: addDoubleResponse(command, view.stopFreq()); break;
    case 102:
      if (command.nextInt(number)) view.setPoints(number);
      break;
    case 103: addDoubleResponse(command, view.points()); break;  // the count, as a double
    case 104:
      if (command.nextDouble(value)) view.setStartAmpl(value);
      break;
    case 105: addDoubleResponse(command, view.startAmpl()); break;
    case 106:
      if (command.nextDouble(value)) view.setStopAmpl(value);
      break;
    case 107: addDoubleResponse(command, view.stopAmpl()); break;
    case 108:
      if (command.nextTime(value)) view.setDwellTime(value);
      break;
    case 109: addDoubleResponse(command, view.dwellTime()); break;
    default: break;
  }
}

}  // namespace

void registerStepSweepMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewStepSweep, generateStepSweep, 92, 109, handleStepSweepRow);
}
