#pragma once
// First-order low-pass/high-pass filters made by the bilinear transform, and a state-variable
// filter giving low-pass, band-pass, high-pass and notch outputs at once.
#include "digitfilt/foundation/design_base.h"

// One first-order section: y[n] = b x[n] - b sign x[n-1] + a y[n-1], returned times `gain`.
struct fstord {
  double fc = 0.0;     // corner frequency, Hz
  double fs = 0.0;     // sample rate, Hz
  double warp = 0.0;   // tan(pi fc / fs)
  double a = 0.0;      // feedback: (1 - warp) / (1 + warp)
  double b = 0.0;      // input: (a sign + 1) / 2
  double gain = 0.0;   // multiplies only the returned value
  double xPrev = 0.0;
  double yPrev = 0.0;  // before the gain
  double sign = 0.0;   // -1 low-pass (unity at DC), +1 high-pass (unity at Nyquist)
};

// State-variable filter record; the caller reads the four outputs after each step.
struct SINGLE_ORDER_TCPFX {
  double f = 0.0;     // sin(pi fc / fs), not doubled
  double damp = 0.0;  // 1 / Q
  double low = 0.0;
  double band = 0.0;
  double high = 0.0;
  double notch = 0.0;
  double spare0 = 0.0;  // cleared by setstate, otherwise unused
  double spare1 = 0.0;
  double extra = 0.0;   // stored by setstate, never read by statevar
};

// Operations on caller-owned records. Values are not checked (a zero rate or a corner beyond
// Nyquist gives infinite or NaN coefficients); a null record gives 0 and is left alone.
class CRtfSingleOrderTcPf {
 public:
  int cal_firstorder(fstord* f, double fc, double fs, double gain, double sign);
  double first_order(fstord* f, double x);
  int setstate(SINGLE_ORDER_TCPFX* s, double fc, double fs, double q, double extra);
  // Updates low (from the previous band), then high, then band, then notch: the order is part of
  // the response.
  int statevar(SINGLE_ORDER_TCPFX* s, double x);
};

// The first-order section held in a designer object; the type is chosen by an integer.
class CDigitFiltCoefMak04SingleOrder : public CDigitFiltCoefMak {
 public:
  CDigitFiltCoefMak04SingleOrder() = default;

  // type 0 low-pass, 1 high-pass; any other shows "Wrong filter type!" and changes nothing.
  void cal_firstorder(double fc, double fs, double gain, int type);
  double first_order(double x);

  double fc = 0.0;
  double fs = 0.0;
  double warp = 0.0;
  double a = 0.0;
  double b = 0.0;
  double gain = 0.0;
  double xPrev = 0.0;
  double yPrev = 0.0;
  double sign = 0.0;
};
