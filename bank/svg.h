// Charts of curves over one axis, as SVG.
#pragma once

#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "bank/markup.h"

namespace qs::bank {

struct ChartCurve {
  std::string label;
  std::vector<double> y;  // as many as the chart's x; what is no number, or beyond 1e290, interrupts the curve
};

// A vertical line with a label above it.
struct ChartMark {
  double x;
  std::string_view label;
};

struct Chart {
  std::string title, xTitle;
  std::vector<double> x;  // ascending or descending
  std::vector<ChartCurve> curves;
  std::vector<ChartMark> marks;  // those beyond the axis are omitted
  std::vector<double> limits;    // dashed vertical lines, the same
  bool isDoubtful = false;       // draws the curves in another colour
};

// Appends an <svg> element whose lengths are half pixels. Its style is kChartStyle, which the page has once. The Y axis
// is logarithmic where all values are positive and the largest is many times the least.
void appendChart(Markup& page, const Chart& chart);

// A file with the charts one below the other and a legend for their curves.
std::string svgFile(std::span<const Chart> charts);

inline constexpr std::string_view kChartStyle =
    "svg{font:22px sans-serif}"
    "svg path{fill:none}"
    "svg text{fill:currentColor}"
    ".x{text-anchor:middle}"
    ".y{text-anchor:end}"
    ".g{stroke:#8884}"
    ".a{stroke:currentColor}"
    ".m{stroke:#d55e00}"
    ".i{stroke:#888;stroke-dasharray:6}"
    ".l{stroke:#0072b2;stroke-width:3;stroke-linecap:round}"
    ".l1{stroke:#d55e00}"
    ".l2{stroke:#009e73}"
    ".l3{stroke:#cc79a7}"
    ".l4{stroke:#e69f00}"
    ".l5{stroke:#56b4e9}"
    ".d .l{stroke:#c00}";

// Numbers of the form 1, 2 or 5 times a power of ten, times an integer, from `from` to `to`: at most `most` of them.
std::vector<double> roundTicks(double from, double to, int most);

// The same for a logarithmic axis: powers of ten, with their double and fivefold where these are few.
std::vector<double> logarithmicTicks(double from, double to, int most);

}  // namespace qs::bank
