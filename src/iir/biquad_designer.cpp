#include "digitfilt/iir/biquad_designer.h"

#include <cmath>

namespace {

constexpr double kHalfLn2 = 0.34657359027997264;

}  // namespace

using digitfilt::kPi;
using digitfilt::kTwoPi;

CDigitFiltCoefMak07BiQuad::CDigitFiltCoefMak07BiQuad() : tickStateOwner_(new double[2]()) {
  tickState = tickStateOwner_.get();
}

void CDigitFiltCoefMak07BiQuad::setPoleCoeffs(double* c) {
  if (c == nullptr) return;
  poleCoef1 = c[0];
  poleCoef2 = c[1];
}

void CDigitFiltCoefMak07BiQuad::setZeroCoeffs(double* c) {
  if (c == nullptr) return;
  zeroCoef1 = c[0];
  zeroCoef2 = c[1];
}

void CDigitFiltCoefMak07BiQuad::setFreqAndReson(double freq, double reson) {
  const double theta = kTwoPi * freq / tickRate;
  poleCoef2 = -(reson * reson);
  poleCoef1 = 2.0 * reson * std::cos(theta);
}

void CDigitFiltCoefMak07BiQuad::setEqualGainZeroes() {
  zeroCoef1 = 0.0;
  zeroCoef2 = -1.0;
}

void CDigitFiltCoefMak07BiQuad::clear() {
  tickState[0] = tickState[1] = 0.0;
  lastOutput = 0.0;
}

double CDigitFiltCoefMak07BiQuad::tick(double x) {
  double* s = tickState;
  const double w = gain * x + poleCoef1 * s[0] + poleCoef2 * s[1];
  const double y = w + zeroCoef1 * s[0] + zeroCoef2 * s[1];
  s[1] = s[0];
  s[0] = w;
  lastOutput = y;
  return y;
}

int CDigitFiltCoefMak07BiQuad::BiQuad_new(int type, double dbGain, double freq, double sampleRate,
                                          double q, double shelfSlope) {
  if (static_cast<unsigned>(type) > 9u || type == 2) return 0;
  const double A = std::pow(10.0, dbGain / 40.0);
  const double omega = kTwoPi * freq / sampleRate;
  const double sn = std::sin(omega);
  const double cs = std::cos(omega);
  const double alpha = sn / (2.0 * q);
  const double sqrtA2 = 2.0 * std::sqrt(A);

  double b0 = 1.0, b1 = 0.0, b2 = 0.0, a0 = 1.0, a1 = -2.0 * cs, a2 = 0.0;
  switch (type) {
    case 0:  // low-pass
      b0 = (1.0 - cs) / 2.0;
      b1 = 1.0 - cs;
      b2 = (1.0 - cs) / 2.0;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 1:  // high-pass
      b0 = (1.0 + cs) / 2.0;
      b1 = -(1.0 + cs);
      b2 = (1.0 + cs) / 2.0;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 3:  // notch
      b0 = 1.0;
      b1 = -2.0 * cs;
      b2 = 1.0;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 4:  // band-pass, peak gain q
      b0 = sn / 2.0;
      b1 = 0.0;
      b2 = -sn / 2.0;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 5:  // band-pass, 0 dB peak
      b0 = alpha;
      b1 = 0.0;
      b2 = -alpha;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 6:  // all-pass
      b0 = 1.0 - alpha;
      b1 = -2.0 * cs;
      b2 = 1.0 + alpha;
      a0 = 1.0 + alpha;
      a2 = 1.0 - alpha;
      break;
    case 7: {  // peaking; q is the band width in octaves
      const double alphaB = sn * std::sinh(kHalfLn2 * q * omega / sn);
      b0 = 1.0 + alphaB * A;
      b1 = -2.0 * cs;
      b2 = 1.0 - alphaB * A;
      a0 = 1.0 + alphaB / A;
      a2 = 1.0 - alphaB / A;
      break;
    }
    case 8:
    case 9: {
      const double alphaS = (sn / 2.0) * std::sqrt((A + 1.0 / A) * (1.0 / shelfSlope - 1.0) + 2.0);
      const double s = sqrtA2 * alphaS;
      if (type == 8) {  // low shelf
        b0 = A * ((A + 1.0) - (A - 1.0) * cs + s);
        b1 = 2.0 * A * ((A - 1.0) - (A + 1.0) * cs);
        b2 = A * ((A + 1.0) - (A - 1.0) * cs - s);
        a0 = (A + 1.0) + (A - 1.0) * cs + s;
        a1 = -2.0 * ((A - 1.0) + (A + 1.0) * cs);
        a2 = (A + 1.0) + (A - 1.0) * cs - s;
      } else {  // high shelf
        b0 = A * ((A + 1.0) + (A - 1.0) * cs + s);
        b1 = -2.0 * A * ((A - 1.0) + (A + 1.0) * cs);
        b2 = A * ((A + 1.0) + (A - 1.0) * cs - s);
        a0 = (A + 1.0) - (A - 1.0) * cs + s;
        a1 = 2.0 * ((A - 1.0) - (A + 1.0) * cs);
        a2 = (A + 1.0) - (A - 1.0) * cs - s;
      }
      break;
    }
    default:
      break;
  }
  cb0 = b0 / a0;
  cb1 = b1 / a0;
  cb2 = b2 / a0;
  ca1 = a1 / a0;
  ca2 = a2 / a0;
  cx1 = cx2 = cy1 = cy2 = 0.0;
  return 1;
}

double CDigitFiltCoefMak07BiQuad::BiQuad(double x) {
  const double y = cb0 * x + cb1 * cx1 + cb2 * cx2 - ca1 * cy1 - ca2 * cy2;
  cx2 = cx1;
  cx1 = x;
  cy2 = cy1;
  cy1 = y;
  return y;
}

double CDigitFiltCoefMak07BiQuad::estimateFilterOrder(double passDb, double stopDb,
                                                      double passFreq, double stopFreq,
                                                      double sampleRate) {
  const double ratio =
      (std::pow(10.0, stopDb / 20.0) - 1.0) / (std::pow(10.0, passDb / 20.0) - 1.0);
  return std::ceil(std::log(std::sqrt(ratio)) /
                   std::log(std::tan(kPi * stopFreq / sampleRate) /
                            std::tan(kPi * passFreq / sampleRate)));
}
