// SPDX-License-Identifier: MIT
// Serialised access to the FFTW planner, shared by the FFT and FIR objects of this folder.
#include "dsp/fftw_plan.h"

#include <mutex>

namespace {
std::mutex& plannerMutex() {
  static std::mutex mutex;
  return mutex;
}
}  // namespace

fftwf_plan fftwPlanDft(int n, fftwf_complex* in, fftwf_complex* out, int sign) {
  std::lock_guard<std::mutex> lock(plannerMutex());
  return fftwf_plan_dft_1d(n, in, out, sign, FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
}

void fftwDestroyPlan(fftwf_plan plan) {
  if (!plan) return;
  std::lock_guard<std::mutex> lock(plannerMutex());
  fftwf_destroy_plan(plan);
}
