#include "digitfilt/realtime/rtf_single_order.h"

#include <cmath>

#include "digitfilt/foundation/messages.h"

namespace {

// Shared by the record and the designer object, which carry the same named fields.
template <class Section>
void designFirstOrder(Section& s, double fc, double fs, double gain, double sign) {
  s.fc = fc;
  s.fs = fs;
  s.gain = gain;
  s.sign = sign;
  s.warp = std::tan(digitfilt::kPi * fc / fs);
  s.a = (1.0 - s.warp) / (1.0 + s.warp);
  s.b = (s.a * sign + 1.0) * 0.5;
  s.xPrev = 0.0;
  s.yPrev = 0.0;
}

template <class Section>
double stepFirstOrder(Section& s, double x) {
  const double y = s.b * x - s.b * s.sign * s.xPrev + s.a * s.yPrev;
  s.xPrev = x;
  s.yPrev = y;
  return y * s.gain;
}

}  // namespace

int CRtfSingleOrderTcPf::cal_firstorder(fstord* f, double fc, double fs, double gain,
                                        double sign) {
  if (f == nullptr) return 0;
  designFirstOrder(*f, fc, fs, gain, sign);
  return 1;
}

double CRtfSingleOrderTcPf::first_order(fstord* f, double x) {
  return f == nullptr ? 0.0 : stepFirstOrder(*f, x);
}

int CRtfSingleOrderTcPf::setstate(SINGLE_ORDER_TCPFX* s, double fc, double fs, double q,
                                  double extra) {
  if (s == nullptr) return 0;
  s->f = std::sin(digitfilt::kPi * fc / fs);
  s->damp = 1.0 / q;
  s->low = s->band = s->high = s->notch = 0.0;
  s->spare0 = s->spare1 = 0.0;
  s->extra = extra;
  return 1;
}

int CRtfSingleOrderTcPf::statevar(SINGLE_ORDER_TCPFX* s, double x) {
  if (s == nullptr) return 0;
  const double b0 = s->band;
  s->low += s->f * b0;
  s->high = x - s->low - s->damp * b0;
  s->band = b0 + s->f * s->high;
  s->notch = s->high + s->low;
  return 1;
}

void CDigitFiltCoefMak04SingleOrder::cal_firstorder(double fcHz, double fsHz, double gainOut,
                                                     int type) {
  if (type != 0 && type != 1) {
    digitfilt::showMessage(L"Wrong filter type!");
    return;
  }
  designFirstOrder(*this, fcHz, fsHz, gainOut, type == 0 ? -1.0 : 1.0);
}

double CDigitFiltCoefMak04SingleOrder::first_order(double x) { return stepFirstOrder(*this, x); }
