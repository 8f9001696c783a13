#include "growth_curves.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "tables.h"

namespace orlocal::bench {
namespace {

constexpr int kColumns = 3;
constexpr double kPanelWidth = 330, kPanelHeight = 270;
/// Of the plot within its panel.
constexpr double kLeft = 62, kRight = 22, kTop = 34, kLegendLine = 15, kBottom = 42;
constexpr std::string_view kSides[] = {"ours", "first", "second", "third"};

constexpr std::string_view kStyle = R"(<style>
  text { font: 12px sans-serif; fill: #1f2328; }
  text.title { font-weight: bold; font-size: 13px; }
  text.small { font-size: 11px; fill: #59636e; }
  .ground { fill: #ffffff; }
  .grid { stroke: #d1d9e0; }
  .curve { fill: none; stroke-width: 2; }
  .range { stroke-width: 1; }
  .ours { stroke: #0969da; } .dot.ours { fill: #0969da; }
  .first { stroke: #bc4c00; } .dot.first { fill: #bc4c00; }
  .second { stroke: #1a7f37; } .dot.second { fill: #1a7f37; }
  .third { stroke: #8250df; } .dot.third { fill: #8250df; }
  @media (prefers-color-scheme: dark) {
    text { fill: #f0f6fc; }
    text.small { fill: #9198a1; }
    .ground { fill: #0d1117; }
    .grid { stroke: #3d444d; }
    .ours { stroke: #4493f8; } .dot.ours { fill: #4493f8; }
    .first { stroke: #f0883e; } .dot.first { fill: #f0883e; }
    .second { stroke: #3fb950; } .dot.second { fill: #3fb950; }
    .third { stroke: #ab7df8; } .dot.third { fill: #ab7df8; }
  }
</style>
)";

/// A logarithmic axis between powers of ten, at least so many of them apart.
class Axis {
 public:
  Axis(double low, double high, double begin, double end, int decades = 1)
      : m_low(std::floor(std::log10(low))), m_high(std::ceil(std::log10(high))), m_begin(begin), m_end(end) {
    m_low = std::min(m_low, m_high - decades);
  }

  double at(double value) const { return m_begin + (m_end - m_begin) * (std::log10(value) - m_low) / (m_high - m_low); }

  std::vector<double> powers() const {
    std::vector<double> powers;
    for (double exponent = m_low; exponent <= m_high; ++exponent) { powers.push_back(std::pow(10, exponent)); }
    return powers;
  }

 private:
  double m_low, m_high, m_begin, m_end;
};

std::string sizeText(double events) {
  if (events >= 1e6) { return fmt::format("{:g} M", events / 1e6); }
  if (events >= 1e3) { return fmt::format("{:g} k", events / 1e3); }
  return fmt::format("{:g}", events);
}

std::string durationText(double seconds) {
  constexpr struct {
    double least;
    const char* unit;
  } kUnits[] = {{1, "s"}, {1e-3, "ms"}, {1e-6, "µs"}, {0, "ns"}};
  for (const auto& unit : kUnits) {
    // A power of ten may be a little less than itself.
    if (seconds * 1.001 < unit.least) { continue; }
    return fmt::format("{:.3g} {}", seconds / (unit.least > 0 ? unit.least : 1e-9), unit.unit);
  }
  return "";
}

std::string escaped(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    if (c == '&') {
      safe += "&amp;";
    } else if (c == '<') {
      safe += "&lt;";
    } else {
      safe += c;
    }
  }
  return safe;
}

struct Point {
  double events, low, median, high;
};

/// One contender over all sizes, for one row of its work.
struct Curve {
  std::string name;
  std::vector<Point> points;
};

std::vector<Curve> curvesOf(const Series& series) {
  std::vector<Curve> curves{{"the plug-in", {}}};
  for (const Side& floor : series.rows.front().floors) { curves.push_back({floor.name, {}}); }
  for (const Row& row : series.rows) {
    for (std::size_t i = 0; i < curves.size(); ++i) {
      const Side& side = i == 0 ? row.subject : row.floors.at(i - 1);
      if (side.rows == 0 || side.amount.low <= 0) { continue; }
      const auto rows = static_cast<double>(side.rows);
      curves[i].points.push_back({static_cast<double>(row.events), side.amount.low / rows, side.amount.median / rows,
                                  side.amount.high / rows});
    }
  }
  return curves;
}

std::string curveText(const Curve& curve, std::string_view side, const Axis& x, const Axis& y) {
  std::string line, marks;
  for (const Point& point : curve.points) {
    line += fmt::format("{:.1f},{:.1f} ", x.at(point.events), y.at(point.median));
    marks += fmt::format(
        "<line class=\"range {0}\" x1=\"{1:.1f}\" x2=\"{1:.1f}\" y1=\"{2:.1f}\" y2=\"{3:.1f}\"/>"
        "<circle class=\"dot {0}\" cx=\"{1:.1f}\" cy=\"{4:.1f}\" r=\"2.5\"/>\n",
        side, x.at(point.events), y.at(point.low), y.at(point.high), y.at(point.median));
  }
  return fmt::format("<polyline class=\"curve {}\" points=\"{}\"/>\n{}", side, line, marks);
}

std::string panel(const Series& series) {
  const auto curves = curvesOf(series);
  double least = INFINITY, most = 0;
  for (const Curve& curve : curves) {
    for (const Point& point : curve.points) {
      least = std::min(least, point.low);
      most = std::max(most, point.high);
    }
  }
  if (most <= 0) { return ""; }
  const double top = kTop + kLegendLine * static_cast<double>((curves.size() + 1) / 2);
  const Axis x(static_cast<double>(series.rows.front().events), static_cast<double>(series.rows.back().events), kLeft,
               kPanelWidth - kRight);
  // Over fewer decades noise would look like growth.
  const Axis y(least, most, kPanelHeight - kBottom, top, 2);
  std::string text = fmt::format("<text class=\"title\" x=\"{}\" y=\"20\">{}</text>\n", kLeft, escaped(series.name));
  for (const double events : x.powers()) {
    text += fmt::format(
        "<line class=\"grid\" x1=\"{0:.1f}\" x2=\"{0:.1f}\" y1=\"{1}\" y2=\"{2}\"/><text class=\"small\" x=\"{0:.1f}\" "
        "y=\"{3}\" text-anchor=\"middle\">{4}</text>\n",
        x.at(events), top, kPanelHeight - kBottom, kPanelHeight - kBottom + 15, sizeText(events));
  }
  for (const double seconds : y.powers()) {
    text += fmt::format(
        "<line class=\"grid\" x1=\"{0}\" x2=\"{1}\" y1=\"{2:.1f}\" y2=\"{2:.1f}\"/><text class=\"small\" x=\"{3}\" "
        "y=\"{4:.1f}\" text-anchor=\"end\">{5}</text>\n",
        kLeft, kPanelWidth - kRight, y.at(seconds), kLeft - 5, y.at(seconds) + 4, durationText(seconds));
  }
  text += fmt::format(
      "<text class=\"small\" x=\"{0}\" y=\"{1}\" text-anchor=\"middle\">events in the store</text>\n"
      "<text class=\"small\" transform=\"translate(12,{2}) rotate(-90)\" text-anchor=\"middle\">time of one "
      "row</text>\n",
      (kLeft + kPanelWidth - kRight) / 2, kPanelHeight - 10, (top + kPanelHeight - kBottom) / 2);
  for (std::size_t i = 0; i < curves.size() && i < std::size(kSides); ++i) {
    const double across = i % 2 == 0 ? kLeft : kLeft + 110, down = kTop + kLegendLine * static_cast<double>(i / 2);
    text += fmt::format(
        "<line class=\"curve {0}\" x1=\"{1}\" x2=\"{2}\" y1=\"{3}\" y2=\"{3}\"/><text class=\"small\" x=\"{4}\" "
        "y=\"{5}\">{6}</text>\n",
        kSides[i], across, across + 14, down - 4 + 2, across + 18, down + 2, escaped(curves[i].name));
    text += curveText(curves[i], kSides[i], x, y);
  }
  return text;
}

}  // namespace

std::string growthCurves(const Results& results) {
  std::string panels;
  int count = 0;
  for (const Series& series : growingTimesOf(results)) {
    const std::string text = panel(series);
    if (text.empty()) { continue; }
    panels += fmt::format("<g transform=\"translate({},{})\">\n{}</g>\n", count % kColumns * kPanelWidth,
                          count / kColumns * kPanelHeight, text);
    ++count;
  }
  const double width = kColumns * kPanelWidth, height = (count + kColumns - 1) / kColumns * kPanelHeight;
  return fmt::format(
             "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" height=\"{1}\">\n"
             "<title>Time per row over the number of events in the store</title>\n",
             width, height) +
         std::string(kStyle) +
         fmt::format("<rect class=\"ground\" width=\"{}\" height=\"{}\"/>\n{}</svg>\n", width, height, panels);
}

}  // namespace orlocal::bench
