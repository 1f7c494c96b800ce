#include "svg_plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace digitfilt::tool {
namespace {

constexpr double kMarginLeft = 70, kMarginRight = 20, kPanelTop = 34, kMarginBottom = 46;

std::string num(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f", v);
  return buf;
}

std::string tickText(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", std::fabs(v) < 1e-12 ? 0.0 : v);
  return buf;
}

double niceStep(double range, int wanted) {
  const double raw = range / std::max(wanted, 1);
  const double mag = std::pow(10.0, std::floor(std::log10(raw)));
  for (double m : {1.0, 2.0, 5.0, 10.0})
    if (raw <= m * mag) return m * mag;
  return 10.0 * mag;
}

struct Frame {
  double left, top, width, height;
  double x0, x1, y0, y1;
  bool logX;
  double px(double x) const {
    const double t = logX ? (std::log10(x) - std::log10(x0)) / (std::log10(x1) - std::log10(x0))
                          : (x - x0) / (x1 - x0);
    return left + t * width;
  }
  double py(double y) const { return top + (1.0 - (y - y0) / (y1 - y0)) * height; }
};

void fitY(PlotPanel& p) {
  if (p.yMin < p.yMax) return;
  double lo = INFINITY, hi = -INFINITY;
  for (const Curve& c : p.curves)
    for (double v : c.y)
      if (std::isfinite(v)) {
        lo = std::min(lo, v);
        hi = std::max(hi, v);
      }
  if (!(lo <= hi)) lo = 0.0, hi = 1.0;
  if (hi - lo < 1e-9) lo -= 1.0, hi += 1.0;
  const double step = niceStep(hi - lo, 6);
  p.yMin = std::floor(lo / step) * step;
  p.yMax = std::ceil(hi / step) * step;
}

void axes(std::ostringstream& o, const Frame& f) {
  o << "<g class=\"grid\" stroke=\"#dddddd\" stroke-width=\"1\">\n";
  std::ostringstream labels;
  if (f.logX) {
    const int d0 = static_cast<int>(std::floor(std::log10(f.x0)));
    const int d1 = static_cast<int>(std::ceil(std::log10(f.x1)));
    const bool fine = (d1 - d0) <= 3;
    for (int d = d0; d <= d1; ++d)
      for (int m = 1; m <= 9; ++m) {
        const double x = m * std::pow(10.0, d);
        if (x < f.x0 * (1 - 1e-9) || x > f.x1 * (1 + 1e-9)) continue;
        const bool major = m == 1;
        o << "<line x1=\"" << num(f.px(x)) << "\" y1=\"" << num(f.top) << "\" x2=\""
          << num(f.px(x)) << "\" y2=\"" << num(f.top + f.height) << "\""
          << (major ? " stroke=\"#bbbbbb\"" : "") << "/>\n";
        if (major || (fine && (m == 2 || m == 5)))
          labels << "<text x=\"" << num(f.px(x)) << "\" y=\"" << num(f.top + f.height + 16)
                 << "\" text-anchor=\"middle\">" << tickText(x) << "</text>\n";
      }
  } else {
    const double step = niceStep(f.x1 - f.x0, 8);
    for (double x = std::ceil(f.x0 / step) * step; x <= f.x1 + step * 1e-9; x += step) {
      o << "<line x1=\"" << num(f.px(x)) << "\" y1=\"" << num(f.top) << "\" x2=\"" << num(f.px(x))
        << "\" y2=\"" << num(f.top + f.height) << "\"/>\n";
      labels << "<text x=\"" << num(f.px(x)) << "\" y=\"" << num(f.top + f.height + 16)
             << "\" text-anchor=\"middle\">" << tickText(x) << "</text>\n";
    }
  }
  const double ystep = niceStep(f.y1 - f.y0, 6);
  for (double y = std::ceil(f.y0 / ystep) * ystep; y <= f.y1 + ystep * 1e-9; y += ystep) {
    o << "<line x1=\"" << num(f.left) << "\" y1=\"" << num(f.py(y)) << "\" x2=\""
      << num(f.left + f.width) << "\" y2=\"" << num(f.py(y)) << "\"/>\n";
    labels << "<text x=\"" << num(f.left - 6) << "\" y=\"" << num(f.py(y) + 4)
           << "\" text-anchor=\"end\">" << tickText(y) << "</text>\n";
  }
  o << "</g>\n<g class=\"ticks\" fill=\"#333333\">\n" << labels.str() << "</g>\n";
}

void polyline(std::ostringstream& o, const Curve& c, const std::string& points) {
  o << "<polyline class=\"curve\" data-label=\"" << xmlEscape(c.label) << "\" fill=\"none\" stroke=\""
    << c.color << "\" stroke-width=\"" << c.width << "\" stroke-linejoin=\"round\""
    << (c.opacity < 1.0 ? " stroke-opacity=\"" + num(c.opacity) + "\"" : std::string())
    << (c.dashed ? " stroke-dasharray=\"6 4\"" : "") << " points=\"" << points << "\"/>\n";
}

void curve(std::ostringstream& o, const Frame& f, const Curve& c) {
  // Values far outside the frame are pulled to just beyond it: the clip path hides them and
  // the coordinates stay small.
  const double span = f.y1 - f.y0;
  std::string points;
  bool any = false;
  const std::size_t n = std::min(c.x.size(), c.y.size());
  for (std::size_t i = 0; i < n; ++i) {
    const double x = c.x[i], y = c.y[i];
    const bool ok = std::isfinite(x) && std::isfinite(y) && (!f.logX || x > 0);
    if (!ok) {
      if (!points.empty()) polyline(o, c, points), any = true;
      points.clear();
      continue;
    }
    const double yc = std::clamp(y, f.y0 - 0.05 * span, f.y1 + 0.05 * span);
    if (!points.empty()) points += ' ';
    points += num(f.px(x)) + "," + num(f.py(yc));
  }
  if (!points.empty() || !any) polyline(o, c, points);
}

void legend(std::ostringstream& o, const Frame& f, const std::vector<Curve>& curves, bool top) {
  if (curves.empty()) return;
  std::size_t longest = 0;
  for (const Curve& c : curves) longest = std::max(longest, c.label.size());
  const double w = 40 + 6.5 * static_cast<double>(longest), h = 8 + 16.0 * curves.size();
  const double x = top ? f.left + f.width - w - 8 : f.left + 8;
  const double y = top ? f.top + 8 : f.top + f.height - h - 8;
  o << "<g class=\"legend\">\n<rect x=\"" << num(x) << "\" y=\"" << num(y) << "\" width=\""
    << num(w) << "\" height=\"" << num(h)
    << "\" fill=\"white\" fill-opacity=\"0.9\" stroke=\"#999999\"/>\n";
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const Curve& c = curves[i];
    const double ly = y + 12 + 16.0 * i;
    o << "<line x1=\"" << num(x + 6) << "\" y1=\"" << num(ly) << "\" x2=\"" << num(x + 30)
      << "\" y2=\"" << num(ly) << "\" stroke=\"" << c.color << "\" stroke-width=\"" << c.width
      << "\"" << (c.dashed ? " stroke-dasharray=\"6 4\"" : "") << "/>\n<text x=\""
      << num(x + 36) << "\" y=\"" << num(ly + 4) << "\">" << xmlEscape(c.label) << "</text>\n";
  }
  o << "</g>\n";
}

}  // namespace

std::string xmlEscape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    switch (ch) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += ch;
    }
  }
  return out;
}

std::string curveColor(std::size_t index) {
  static const char* palette[] = {"#1f77b4", "#d62728", "#2ca02c", "#ff7f0e", "#9467bd",
                                  "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22", "#17becf"};
  return palette[index % (sizeof palette / sizeof palette[0])];
}

std::string renderSvg(const std::string& title, const std::vector<PlotPanel>& panelsIn,
                      int width, int panelHeight) {
  const double titleHeight = 30;
  const double height = titleHeight + panelHeight * static_cast<double>(panelsIn.size());
  std::ostringstream o;
  o << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
    << num(height) << "\" viewBox=\"0 0 " << width << " " << num(height)
    << "\" font-family=\"Helvetica, Arial, sans-serif\" font-size=\"12\">\n"
    << "<title>" << xmlEscape(title) << "</title>\n"
    << "<rect x=\"0\" y=\"0\" width=\"" << width << "\" height=\"" << num(height)
    << "\" fill=\"white\"/>\n"
    << "<text x=\"" << width / 2 << "\" y=\"20\" text-anchor=\"middle\" font-size=\"15\" "
       "font-weight=\"bold\">"
    << xmlEscape(title) << "</text>\n";
  for (std::size_t k = 0; k < panelsIn.size(); ++k) {
    PlotPanel p = panelsIn[k];
    fitY(p);
    if (p.logX && !(p.xMin > 0)) p.xMin = p.xMax / 1000.0;
    Frame f{kMarginLeft, titleHeight + k * panelHeight + kPanelTop,
            width - kMarginLeft - kMarginRight, panelHeight - kPanelTop - kMarginBottom,
            p.xMin, p.xMax, p.yMin, p.yMax, p.logX};
    const std::string clip = "plot-area-" + std::to_string(k);
    o << "<g class=\"panel\" id=\"panel-" << k << "\">\n"
      << "<text x=\"" << num(f.left) << "\" y=\"" << num(f.top - 10)
      << "\" font-size=\"13\" font-weight=\"bold\">" << xmlEscape(p.title) << "</text>\n"
      << "<clipPath id=\"" << clip << "\"><rect x=\"" << num(f.left) << "\" y=\"" << num(f.top)
      << "\" width=\"" << num(f.width) << "\" height=\"" << num(f.height) << "\"/></clipPath>\n";
    axes(o, f);
    o << "<rect x=\"" << num(f.left) << "\" y=\"" << num(f.top) << "\" width=\"" << num(f.width)
      << "\" height=\"" << num(f.height) << "\" fill=\"none\" stroke=\"#333333\"/>\n"
      << "<text x=\"" << num(f.left + f.width / 2) << "\" y=\"" << num(f.top + f.height + 36)
      << "\" text-anchor=\"middle\">" << xmlEscape(p.xLabel) << "</text>\n"
      << "<text transform=\"translate(" << num(f.left - 50) << "," << num(f.top + f.height / 2)
      << ") rotate(-90)\" text-anchor=\"middle\">" << xmlEscape(p.yLabel) << "</text>\n"
      << "<g clip-path=\"url(#" << clip << ")\">\n";
    for (const Curve& c : p.curves) curve(o, f, c);
    o << "</g>\n";
    legend(o, f, p.curves, p.legendTop);
    o << "</g>\n";
  }
  o << "</svg>\n";
  return o.str();
}

}  // namespace digitfilt::tool
