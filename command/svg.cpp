#include "command/svg.h"

#include "command/output.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace tarn::command::svg {

namespace {

// XML knows no control characters, not even escaped ones.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : as_utf8(in_one_line(text))) {
    switch (c) {
    case '<': result += "&lt;"; break;
    case '>': result += "&gt;"; break;
    case '&': result += "&amp;"; break;
    default: result += c;
    }
  }
  return result;
}

}

std::string format(const char* pattern, ...) {
  char text[512];
  va_list values;
  va_start(values, pattern);
  std::vsnprintf(text, sizeof text, pattern, values);
  va_end(values);
  return text;
}

Range range_of(const std::vector<double>& values) {
  Range range = {INFINITY, -INFINITY};
  for (const double x : values) {
    if (!std::isfinite(x)) continue;
    range.low = std::min(range.low, x);
    range.high = std::max(range.high, x);
  }
  if (range.low > range.high) return {0, 1};
  if (range.low < range.high) return range;
  const double room = std::max(0.5, 0.05 * std::abs(range.low)), most = std::numeric_limits<double>::max();
  return {std::max(range.low - room, -most), std::min(range.high + room, most)};
}

double Range::part(double value) const {
  const double width = high - low;
  return std::isfinite(width) ? (value - low) / width : (value / 2 - low / 2) / (high / 2 - low / 2);
}

double Range::at(double part) const {
  const double width = high - low;
  return std::isfinite(width) ? low + width * part : low * (1 - part) + high * part;
}

std::string start(double width, double height) {
  return format("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" font-family=\"sans-serif\" "
                "font-size=\"12\">\n<rect width=\"100%%\" height=\"100%%\" fill=\"white\"/>\n",
                width, height);
}

std::string text(double x, double y, const char* anchor, const std::string& what) {
  return format("<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y, anchor) + escaped(what) + "</text>\n";
}

std::string frame(double x, double y, double width, double height) {
  return format("<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"%.1f\" fill=\"none\" stroke=\"#888\"/>\n", x, y,
                width, height);
}

}
