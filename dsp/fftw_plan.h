// SPDX-License-Identifier: MIT
// Serialised access to the FFTW planner, shared by the FFT and FIR objects of this folder.
#pragma once

#include <fftw3.h>

// FFTW executes plans on any thread but plans and destroys them on one at a time; the
// streaming thread and the user interface thread both make FFT objects, so every plan goes
// through these. FFTW_ESTIMATE keeps the chosen algorithm, and so the rounding of the
// results, the same from run to run.
fftwf_plan fftwPlanDft(int n, fftwf_complex* in, fftwf_complex* out, int sign);
void fftwDestroyPlan(fftwf_plan plan);

// fftwf_malloc'ed complex buffer owner.
struct FftwFree {
  void operator()(fftwf_complex* p) const { fftwf_free(p); }
};
