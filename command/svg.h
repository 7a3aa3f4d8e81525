// What the pictures are drawn with: pieces of SVG as text.
#pragma once

#include <string>
#include <vector>

namespace tarn::command::svg {

std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

struct Range {
  double low, high;
  double part(double value) const; // 0 at low, 1 at high
  double at(double part) const;    // the value there
};
// Of the finite values; never empty, and with finite ends.
Range range_of(const std::vector<double>& values);

std::string start(double width, double height);
// `what` may be any bytes.
std::string text(double x, double y, const char* anchor, const std::string& what);
std::string frame(double x, double y, double width, double height);

}
