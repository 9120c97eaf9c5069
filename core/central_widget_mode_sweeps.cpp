// SPDX-License-Identifier: MIT
// Step sweep and ramp sweep: views, generators (the step sweep with its own loop) and remote
// rows 92 to 119.
#include "core/central_widget.h"

#include "core/device.h"
#include "modes/mode_view_ramp_sweep.h"
#include "modes/mode_view_step_sweep.h"
#include "modes/ramp_sweep_builder.h"
#include "modes/step_sweep_plan.h"
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
SweepEnd feedDwell(CentralWidget& central, int64_t dwellSamples,
                   const std::vector<Sample>& carrier) {
  Device* device = central.session();
  for (int64_t fed = 0; fed < dwellSamples; fed += stepSweepPieceSamples) {
    if (!central.streamEngine().isStreaming()) return SweepEnd::Stopped;
    device->submitIQ(carrier.data(), static_cast<int>(std::min<int64_t>(stepSweepPieceSamples,
                                                                        dwellSamples - fed)));
    if (device->connectionFailed()) {
      emit central.deviceConnectionLost();
      return SweepEnd::DeviceLost;
    }
  }
  return SweepEnd::Completed;
}

// One pass over the points. Frequency and level go straight to the device, without the
// corrections of a retune.
SweepEnd playSweep(CentralWidget& central, const StepSweepPlan& plan,
                   const std::vector<Sample>& carrier) {
  for (int i = 0; i < plan.points; ++i) {
    central.session()->setFrequency(plan.frequencyAt(i));
    central.session()->setLevel(plan.levelAt(i));
    const SweepEnd end = feedDwell(central, plan.dwellSamples, carrier);
    if (end != SweepEnd::Completed) return end;
    if (!central.streamEngine().isStreaming()) return SweepEnd::Stopped;
  }
  return SweepEnd::Completed;
}

void handleStepSweepRow(ModeViewStepSweep& view, Scpi& command, int id) {
  double value = 0.0;
  int number = 0;
  switch (id) {
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

// Row 119 has the text of row 118, which always matches first: the period has no query.
void handleRampSweepRow(ModeViewRampSweep& view, Scpi& command, int id) {
  double value = 0.0;
  int word = 0;
  switch (id) {
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

void CentralWidget::addSweepViews() {
  modeViewStepSweep = new ModeViewStepSweep(this);
  addMode(modeViewStepSweep);
  modeViewRampSweep = new ModeViewRampSweep(this);
  addMode(modeViewRampSweep);
}

// Retunes the device itself from point to point and feeds it the same constant carrier while
// it dwells. A stop takes effect within one piece (10 ms at 5e7).
void CentralWidget::generateStepSweep() {
  if (!modeViewStepSweep) return;
  const StepSweepPlan plan = planStepSweep(modeViewStepSweep->settings(), level());
  if (plan.dwellSamples < 1) return;  // without a dwell the loop would retune unpaced
  const std::vector<Sample> carrier(stepSweepPieceSamples, Sample(1.0f, 0.0f));
  device->setSampleRate(stepSweepSampleRate);
  opcGate.setOutputReady(true);
  while (engine.isStreaming()) {
    // Triggers during a sweep collapse into one: the request is cleared only here.
    if (plan.singleShot) {
      if (engine.triggerRequests.load(std::memory_order_relaxed) < 1) {
        pause();
        continue;
      }
      engine.triggerRequests.store(0, std::memory_order_relaxed);
    }
    if (playSweep(*this, plan, carrier) != SweepEnd::Completed) return;
    if (plan.singleShot) {
      device->flushAndWait();
      pause();
    }
  }
}

// The chirp has magnitude 1.0: the level is the panel's.
void CentralWidget::generateRampSweep() {
  if (!modeViewRampSweep) return;
  const RampSweepSettings settings = modeViewRampSweep->settings();
  const LongWaveform wave = buildRampSweep(settings, &engine.streaming);
  if (wave.samples.empty()) return;  // stopped during the build
  retuneForMode(wave.sampleRate);
  submitWaveform(wave.samples.data(), wave.samples.size(), settings.trigger == TriggerSingle);
}

void CentralWidget::handleSweepRows(Scpi& command, int id) {
  if (id == 92 || id == 93) {
    handleModeStateRow(command, 5, id == 93);
  } else if (id == 110 || id == 111) {
    handleModeStateRow(command, 6, id == 111);
  } else if (id < 110) {
    if (modeViewStepSweep) handleStepSweepRow(*modeViewStepSweep, command, id);
  } else if (modeViewRampSweep) {
    handleRampSweepRow(*modeViewRampSweep, command, id);
  }
}
