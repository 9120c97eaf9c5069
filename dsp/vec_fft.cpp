// SPDX-License-Identifier: MIT
// Complex FFT objects of 2^order points over FFTW single precision.
#include "dsp/vec_fft.h"

#include "dsp/fftw_plan.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_status.h"

#include <cmath>
#include <cstring>

namespace {

constexpr int kMaxOrder = 27;

// Plans are made on aligned buffers of our own; arrays of the caller with the same alignment
// are transformed directly, others pass through the work buffer.
class FftObject final : public VecFft {
public:
  FftObject(int order, int flags) : ord(order), n(1 << order) {
    const float sqrtScale = static_cast<float>(1.0 / std::sqrt(static_cast<double>(n)));
    const float nScale = 1.0f / static_cast<float>(n);
    fwdScale = flags == VecFftDivFwdByN ? nScale : flags == VecFftDivBySqrtN ? sqrtScale : 1.0f;
    invScale = flags == VecFftDivInvByN ? nScale : flags == VecFftDivBySqrtN ? sqrtScale : 1.0f;
    work = fftwf_alloc_complex(n);
    other = fftwf_alloc_complex(n);
    if (!work || !other) return;
    std::memset(work, 0, sizeof(fftwf_complex) * n);
    std::memset(other, 0, sizeof(fftwf_complex) * n);
    plans[0][0] = fftwPlanDft(n, work, work, FFTW_FORWARD);
    plans[0][1] = fftwPlanDft(n, work, other, FFTW_FORWARD);
    plans[1][0] = fftwPlanDft(n, work, work, FFTW_BACKWARD);
    plans[1][1] = fftwPlanDft(n, work, other, FFTW_BACKWARD);
  }

  ~FftObject() override {
    for (auto& direction : plans)
      for (fftwf_plan plan : direction) fftwDestroyPlan(plan);
    fftwf_free(work);
    fftwf_free(other);
  }

  bool valid() const { return plans[0][0] && plans[0][1] && plans[1][0] && plans[1][1]; }
  int order() const override { return ord; }

  int run(const Sample* src, Sample* dst, bool inverse) {
    auto* in = reinterpret_cast<fftwf_complex*>(const_cast<Sample*>(src));
    auto* out = reinterpret_cast<fftwf_complex*>(dst);
    const int alignment = fftwf_alignment_of(reinterpret_cast<float*>(work));
    const bool direct = fftwf_alignment_of(reinterpret_cast<float*>(in)) == alignment &&
                        fftwf_alignment_of(reinterpret_cast<float*>(out)) == alignment;
    if (direct) {
      fftwf_execute_dft(plans[inverse][in != out], in, out);
    } else {
      std::memcpy(work, in, sizeof(fftwf_complex) * n);
      fftwf_execute_dft(plans[inverse][0], work, work);
      std::memcpy(out, work, sizeof(fftwf_complex) * n);
    }
    const float scale = inverse ? invScale : fwdScale;
    if (scale != 1.0f) vecMulC32fInPlace(scale, reinterpret_cast<float*>(dst), 2 * n);
    return VecOk;
  }

private:
  int ord, n;
  float fwdScale = 1.0f, invScale = 1.0f;
  fftwf_complex* work = nullptr;
  fftwf_complex* other = nullptr;
  fftwf_plan plans[2][2] = {};  // [inverse][out of place]
};

int runFft(const Sample* src, Sample* dst, VecFft* fft, bool inverse) {
  if (!src || !dst || !fft) return VecErrNull;
  return static_cast<FftObject*>(fft)->run(src, dst, inverse);
}

}  // namespace

VecStatePtr<VecFft> vecFftCreate(int order, int flags, int hint) {
  if (order < 0 || order > kMaxOrder) return nullptr;
  if (flags != VecFftNoScale && flags != VecFftDivInvByN && flags != VecFftDivFwdByN &&
      flags != VecFftDivBySqrtN)
    return nullptr;
  auto fft = std::make_unique<FftObject>(order, flags);
  if (!fft->valid()) return nullptr;
  return VecStatePtr<VecFft>(fft.release());
}

int vecFftForward32fc(const Sample* src, Sample* dst, VecFft* fft) {
  return runFft(src, dst, fft, false);
}
int vecFftInverse32fc(const Sample* src, Sample* dst, VecFft* fft) {
  return runFft(src, dst, fft, true);
}
