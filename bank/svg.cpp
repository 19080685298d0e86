#include "bank/svg.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "math/functions.h"

namespace qs::bank {
namespace {

// In half pixels.
constexpr int kWidth = 640, kHeight = 360;
constexpr int kLeft = 96, kRight = 620, kTop = 30, kBottom = 304;
constexpr int kLetter = 22;
constexpr std::size_t kColours = 6;

constexpr double kRatioForLogarithm = 50.0;

// Beyond these, differences are no numbers.
constexpr double kMost = 1e290, kLeast = 1e-290;

bool isDrawn(double number) { return std::abs(number) < kMost; }

double decimal(std::int64_t digits, int exponent) {
  return readDouble(std::to_string(digits) + 'e' + std::to_string(exponent));
}

// From numbers to places between two pixels.
class Axis {
 public:
  Axis(std::pair<double, double> range, bool isLogarithmic, int begin, int end)
      : from_(range.first), to_(range.second), isLogarithmic_(isLogarithmic), begin_(begin), end_(end) {}

  bool has(double number) const { return from_ <= number && number <= to_; }
  // In parts of a half pixel.
  int place(double number, int parts = 1) const {
    const double part = isLogarithmic_ ? (math::log(number) - math::log(from_)) / (math::log(to_) - math::log(from_))
                                       : (number / 2 - from_ / 2) / (to_ / 2 - from_ / 2);
    return static_cast<int>(std::lround(parts * (begin_ + part * (end_ - begin_))));
  }
  std::vector<double> ticks(int most) const {
    return isLogarithmic_ ? logarithmicTicks(from_, to_, most) : roundTicks(from_, to_, most);
  }

 private:
  const double from_, to_;
  const bool isLogarithmic_;
  const int begin_, end_;
};

// The least and the largest number of the curves; 0 and 0 where there is none.
std::pair<double, double> extremesOf(const std::vector<ChartCurve>& curves) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double least = kInfinity, largest = -kInfinity;
  for (const ChartCurve& curve : curves) {
    for (const double y : curve.y) {
      if (!isDrawn(y)) continue;
      least = std::min(least, y);
      largest = std::max(largest, y);
    }
  }
  return least <= largest ? std::pair(least, largest) : std::pair(0.0, 0.0);
}

// With some room at both ends. What differs by its rounding only is drawn as one number.
std::pair<double, double> widened(double least, double largest, double part) {
  const double magnitude = std::max(std::abs(least), std::abs(largest));
  double room = (largest - least) * part;
  if (largest - least <= std::max(magnitude * 1e-9, kLeast)) room = magnitude < kLeast ? 1.0 : magnitude / 10;
  return {least - room, largest + room};
}

Axis yAxisOf(const Chart& chart) {
  const auto [least, largest] = extremesOf(chart.curves);
  const bool isLogarithmic = least > 0.0 && largest / least >= kRatioForLogarithm;
  return {isLogarithmic ? std::pair(least, largest) : widened(least, largest, 0.04), isLogarithmic, kBottom, kTop};
}

Axis xAxisOf(const Chart& chart) {
  const double first = chart.x.empty() ? 0.0 : chart.x.front(), last = chart.x.empty() ? 0.0 : chart.x.back();
  return {widened(std::min(first, last), std::max(first, last), 0.03), false, kLeft, kRight};
}

// Six digits, as people read them.
void appendLabel(Markup& page, double number) {
  std::string digits;
  appendDouble(digits, number);
  page << digits;
}

void appendPlace(Markup& page, int place, bool isFirst) {
  if (!isFirst && place >= 0) page << " ";
  page << place;
}

// In lengths of parts of a half pixel, which only a large picture needs.
void appendCurve(Markup& page, const Chart& chart, std::size_t number, const Axis& x, const Axis& y, int parts) {
  page << "<path class=\"l";
  if (number % kColours != 0) page << " l" << number % kColours;
  if (parts != 1) page << "\" transform=\"scale(" << 1.0 / parts << ")\" style=\"stroke-width:" << 3 * parts << "px";
  page << "\" d=\"";
  const std::vector<double>& values = chart.curves[number].y;
  std::pair<int, int> last;
  enum { Interrupted, Begun, Drawn } state = Interrupted;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!isDrawn(values[i])) {
      if (state == Begun) page << "h0";
      state = Interrupted;
      continue;
    }
    const std::pair place(x.place(chart.x[i], parts), y.place(values[i], parts));
    if (state == Interrupted) {
      page << "M" << place.first;
      appendPlace(page, place.second, false);
      state = Begun;
    } else {
      if (state == Begun) page << "l";
      appendPlace(page, place.first - last.first, state == Begun);
      appendPlace(page, place.second - last.second, false);
      state = Drawn;
    }
    last = place;
  }
  page << (state == Begun ? "h0\"/>" : "\"/>");  // a single point
}

// What is inside the <svg> element, some way down.
void appendContent(Markup& page, const Chart& chart, int parts) {
  const Axis x = xAxisOf(chart), y = yAxisOf(chart);
  const auto xTicks = x.ticks(6), yTicks = y.ticks(5);
  page << "<path class=\"g\" d=\"";
  for (const double tick : xTicks) page << "M" << x.place(tick) << " " << kTop << "V" << kBottom;
  for (const double tick : yTicks) page << "M" << kLeft << " " << y.place(tick) << "H" << kRight;
  page << "\"/><path class=\"a\" d=\"M" << kLeft << " " << kTop << "V" << kBottom << "H" << kRight << "\"/>";

  page << "<text class=\"x\">";
  const auto appendCentred = [&](int place, int height) -> Markup& {
    return page << "<tspan x=\"" << place << "\" y=\"" << height << "\">";
  };
  for (const double tick : xTicks) {
    appendCentred(x.place(tick), kBottom + kLetter + 6);
    appendLabel(page, tick);
    page << "</tspan>";
  }
  std::string lines;
  for (const ChartMark& mark : chart.marks) {
    if (!x.has(mark.x)) continue;
    appendCentred(x.place(mark.x), kTop - 6).text(mark.label) << "</tspan>";
    lines += "M" + std::to_string(x.place(mark.x)) + " " + std::to_string(kTop) + "V" + std::to_string(kBottom);
  }
  page << "</text><text class=\"y\">";
  for (const double tick : yTicks) {
    page << "<tspan x=\"" << kLeft - 8 << "\" y=\"" << y.place(tick) + kLetter / 3 << "\">";
    appendLabel(page, tick);
    page << "</tspan>";
  }
  page << "<tspan x=\"" << kRight << "\" y=\"" << kHeight - 4 << "\">";
  page.text(chart.xTitle) << "</tspan></text>";

  if (!lines.empty()) page << "<path class=\"m\" d=\"" << lines << "\"/>";
  if (!chart.limits.empty()) {
    page << "<path class=\"i\" d=\"";
    for (const double limit : chart.limits)
      if (x.has(limit)) page << "M" << x.place(limit) << " " << kTop << "V" << kBottom;
    page << "\"/>";
  }
  for (std::size_t i = 0; i < chart.curves.size(); ++i) appendCurve(page, chart, i, x, y, parts);
}

}  // namespace

std::vector<double> roundTicks(double from, double to, int most) {
  const double width = to - from;
  if (!(width > kLeast && width < kMost)) return {};
  for (int exponent = static_cast<int>(std::floor(math::log10(width / most)));; ++exponent) {
    for (const int digit : {1, 2, 5}) {
      const double step = decimal(digit, exponent);
      const double first = std::ceil(from / step), last = std::floor(to / step);
      if (last - first >= most) continue;
      std::vector<double> ticks;
      for (int i = 0; i <= last - first; ++i)
        ticks.push_back(decimal((static_cast<std::int64_t>(first) + i) * digit, exponent));
      return ticks;
    }
  }
}

std::vector<double> logarithmicTicks(double from, double to, int most) {
  const int first = static_cast<int>(std::floor(math::log10(from))),
            last = static_cast<int>(std::ceil(math::log10(to)));
  const int step = std::max(1, (last - first + most - 1) / most);
  std::vector<double> ticks;
  for (int exponent = first; exponent <= last; ++exponent) {
    for (const int digit : {1, 2, 5}) {
      const double tick = decimal(digit, exponent);
      const bool isWanted = digit == 1 ? exponent % step == 0 : 2 * (last - first) <= most;
      if (isWanted && from <= tick && tick <= to) ticks.push_back(tick);
    }
  }
  return ticks;
}

void appendChart(Markup& page, const Chart& chart) {
  page << "<svg viewBox=\"0 0 " << kWidth << " " << kHeight << "\" role=\"img\" aria-label=\"";
  page.text(chart.title) << (chart.isDoubtful ? "\" class=\"d\">" : "\">");
  appendContent(page, chart, 1);
  page << "</svg>";
}

std::string svgFile(std::span<const Chart> charts) {
  constexpr int kLine = kLetter + 8;
  std::size_t labels = 0;
  for (const Chart& chart : charts) labels += chart.curves.size() + 1;
  const auto height = static_cast<int>(charts.size()) * kHeight + static_cast<int>(labels) * kLine;
  Markup file;
  file << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kWidth << "\" height=\"" << height
       << "\" viewBox=\"0 0 " << kWidth << " " << height << "\"><style>" << kChartStyle
       << "</style><rect width=\"100%\" height=\"100%\" fill=\"white\"/>";
  int top = 0;
  for (const Chart& chart : charts) {
    file << "<g transform=\"translate(0 " << top << ")\"><text x=\"4\" y=\"" << kLetter << "\">";
    file.text(chart.title) << "</text><g transform=\"translate(0 " << kLine << ")\">";
    appendContent(file, chart, 10);
    file << "</g>";
    top += kLine + kHeight;
    int line = kLine + kHeight + kLetter;
    for (std::size_t i = 0; i < chart.curves.size(); ++i, line += kLine, top += kLine) {
      file << "<path class=\"l l" << i % kColours << "\" d=\"M" << kLeft << " " << line - kLetter / 3
           << "h40\"/><text x=\"" << kLeft + 52 << "\" y=\"" << line << "\">";
      file.text(chart.curves[i].label) << "</text>";
    }
    file << "</g>";
  }
  file << "</svg>\n";
  return file.take();
}

}  // namespace qs::bank
