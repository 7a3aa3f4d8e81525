#include "command/fit_pictures.h"
#include "command/svg.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarn::command {

using namespace svg;

namespace {

constexpr double width = 760, height = 420, left_margin = 80, top_margin = 40, bottom_margin = 60;
constexpr const char* colours[] = {"#4477aa", "#ee6677", "#228833", "#ccbb44", "#66ccee", "#aa3377"};

// From data to the picture.
struct Axes {
  Range x, y;
  double across(double v) const { return left_margin + width * x.part(v); }
  double up(double v) const { return top_margin + height - height * y.part(v); }
};

// Round numbers, about five of them within the range.
std::vector<double> ticks(Range range) {
  const double raw = range.high / 5 - range.low / 5, power = std::pow(10, std::floor(std::log10(raw)));
  const double step = power * (raw / power < 1.5 ? 1 : raw / power < 3.5 ? 2 : raw / power < 7.5 ? 5 : 10);
  std::vector<double> at;
  const double first = std::ceil(range.low / step);
  for (int i = 0; i < 20; ++i) {
    const double tick = (first + i) * step;
    if (tick >= range.low && tick <= range.high && (at.empty() || tick > at.back())) at.push_back(tick);
  }
  return at;
}

std::string grid(const Axes& axes) {
  std::string svg;
  for (const double v : ticks(axes.x)) {
    const double at = axes.across(v);
    svg += format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#ddd\"/>\n", at, top_margin, at,
                  top_margin + height);
    svg += text(at, top_margin + height + 18, "middle", format("%.6g", v));
  }
  for (const double v : ticks(axes.y)) {
    const double at = axes.up(v);
    svg += format("<line x1=\"%.1f\" y1=\"%.1f\" x2=\"%.1f\" y2=\"%.1f\" stroke=\"#ddd\"/>\n", left_margin, at,
                  left_margin + width, at);
    svg += text(left_margin - 6, at + 4, "end", format("%.6g", v));
  }
  return svg;
}

// The curve as lines; it breaks where it is not finite.
std::string curve_of(const FitPicture& picture, const FittedCurve& curve, const Axes& axes, const char* colour) {
  std::string svg, line;
  const auto end_line = [&] {
    if (!line.empty())
      svg += format("<polyline fill=\"none\" stroke=\"%s\" stroke-width=\"1.5\" points=\"", colour) + line + "\"/>\n";
    line.clear();
  };
  for (size_t i = 0; i < picture.curve_x.size(); ++i) {
    if (std::isfinite(curve.curve[i])) {
      line += format("%.2f,%.2f ", axes.across(picture.curve_x[i]), axes.up(curve.curve[i]));
    } else {
      end_line();
    }
  }
  end_line();
  return svg;
}

std::string points_of(const FitPicture& picture, const FittedCurve& curve, const Axes& axes, const char* colour) {
  std::string svg;
  const double radius = picture.data_x.size() > 100 ? 1.6 : 3;
  for (size_t i = 0; i < picture.data_x.size(); ++i)
    svg += format("<circle cx=\"%.2f\" cy=\"%.2f\" r=\"%.1f\" fill=\"%s\" fill-opacity=\"0.7\"/>\n",
                  axes.across(picture.data_x[i]), axes.up(curve.data[i]), radius, colour);
  return svg;
}

}

std::string draw_fit(const FitPicture& picture) {
  std::vector<double> xs = picture.data_x, ys;
  xs.insert(xs.end(), picture.curve_x.begin(), picture.curve_x.end());
  for (const FittedCurve& curve : picture.curves) {
    ys.insert(ys.end(), curve.data.begin(), curve.data.end());
    ys.insert(ys.end(), curve.curve.begin(), curve.curve.end());
  }
  Axes axes = {range_of(xs), range_of(ys)};
  const double room = 0.04 * axes.y.high - 0.04 * axes.y.low, most = std::numeric_limits<double>::max();
  axes.y = {std::max(axes.y.low - room, -most), std::min(axes.y.high + room, most)};

  std::string svg = start(left_margin + width + 30, top_margin + height + bottom_margin) + grid(axes);
  if (picture.shaded_low != picture.shaded_high) {
    const double from = axes.across(std::clamp(picture.shaded_low, axes.x.low, axes.x.high));
    const double to = axes.across(std::clamp(picture.shaded_high, axes.x.low, axes.x.high));
    svg +=
        format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"#ccbb44\" fill-opacity=\"0.2\"/>\n",
               from, top_margin, to - from, height);
  }
  for (size_t k = 0; k < picture.curves.size(); ++k) {
    const char* colour = colours[k % std::size(colours)];
    svg += curve_of(picture, picture.curves[k], axes, colour) + points_of(picture, picture.curves[k], axes, colour);
    const double at = left_margin + 12 + 150 * static_cast<double>(k);
    svg += format("<circle cx=\"%.1f\" cy=\"%.1f\" r=\"4\" fill=\"%s\"/>\n", at, top_margin - 12, colour);
    svg += text(at + 10, top_margin - 8, "start", picture.curves[k].name);
  }
  svg += frame(left_margin, top_margin, width, height);
  svg += text(left_margin + width / 2, top_margin + height + 38, "middle", picture.x_name);
  return svg + text(left_margin + width, top_margin - 8, "end", picture.title) + "</svg>\n";
}

}
