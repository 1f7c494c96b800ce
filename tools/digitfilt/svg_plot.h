#pragma once
// Self-contained SVG line plots (axes, ticks, grid, labels, legend) that open in any browser.
// Every curve is a <polyline class="curve" data-label="..."> so scripts can find it again.
#include <string>
#include <vector>

namespace digitfilt::tool {

struct Curve {
  std::string label;
  std::vector<double> x, y;  // non-finite y values break the line
  std::string color = "#1f77b4";
  double width = 1.5;
  bool dashed = false;
  double opacity = 1.0;
};

struct PlotPanel {
  std::string title;
  std::string xLabel;
  std::string yLabel;
  bool logX = true;
  double xMin = 0.0, xMax = 1.0;
  double yMin = 0.0, yMax = 0.0;  // yMin >= yMax: fitted to the data
  bool legendTop = false;         // default: bottom left, where gain and spectrum plots are empty
  std::vector<Curve> curves;
};

// One figure of panels stacked vertically.
std::string renderSvg(const std::string& title, const std::vector<PlotPanel>& panels,
                      int width = 900, int panelHeight = 340);

// A palette of distinguishable colours, cycled by index.
std::string curveColor(std::size_t index);

// Escapes &, <, >, " and ' for XML text and attributes.
std::string xmlEscape(const std::string& text);

}  // namespace digitfilt::tool
