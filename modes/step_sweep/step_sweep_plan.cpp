// SPDX-License-Identifier: MIT
// Pure plan of a step sweep: the frequency and level of each point and the dwell in samples.
#include "modes/step_sweep/step_sweep_plan.h"

#include <algorithm>

namespace {

// Keeps the conversion to an integer defined for any input; 10 s of dwell is 5e8 samples.
constexpr double maxDwellSamples = 1e12;

}  // namespace

StepSweepPlan planStepSweep(const StepSweepSettings& settings, double panelLevelDbm) {
  StepSweepPlan plan;
  plan.points = std::max(settings.points, 2);
  const double intervals = plan.points - 1;
  plan.startFreqHz = settings.startFreqHz;
  plan.freqStepHz = (settings.stopFreqHz - settings.startFreqHz) / intervals;
  plan.startLevelDbm = settings.startLevelDbm;
  plan.levelStepDb = (settings.stopLevelDbm - settings.startLevelDbm) / intervals;
  if (settings.type == StepSweepFreq) {
    plan.startLevelDbm = panelLevelDbm;
    plan.levelStepDb = 0.0;
  }
  const double dwell = settings.dwellSeconds * stepSweepSampleRate;
  plan.dwellSamples = dwell >= 1.0 && dwell < maxDwellSamples ? static_cast<int64_t>(dwell) : 0;
  plan.singleShot = settings.trigger == TriggerSingle;
  return plan;
}
