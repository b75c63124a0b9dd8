#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace host {

/// Appends a drawing in SVG to a page. Classes are those of the page's style sheet, and lengths are pixels of
/// a drawing that the page scales.
class Svg {
 public:
  enum class Anchor { start, middle, end };

  /// `label` tells people who do not see it what it shows.
  Svg(std::string& out, double width, double height, std::string_view label);
  ~Svg() { out_ += "</svg>\n"; }
  Svg(const Svg&) = delete;
  Svg& operator=(const Svg&) = delete;

  void Line(std::string_view style, double x1, double y1, double x2, double y2);
  void Rect(std::string_view style, double x, double y, double width, double height, double radius = 0.0,
            std::string_view title = {});
  void Circle(std::string_view style, double x, double y, double radius, std::string_view title = {});
  void Text(std::string_view style, double x, double y, std::string_view text, Anchor anchor = Anchor::start);
  /// Text that reads upwards.
  void Upright(std::string_view style, double x, double y, std::string_view text);

  /// A path: begin it, move and draw on, end it.
  void BeginPath(std::string_view style);
  void MoveTo(double x, double y) { Go('M', x, y); }
  void LineTo(double x, double y) { Go('L', x, y); }
  void EndPath() { out_ += "\"/>\n"; }

 private:
  void Begin(std::string_view tag, std::string_view style,
             std::initializer_list<std::pair<std::string_view, double>> attributes);
  void End(std::string_view tag, std::string_view title);
  void Go(char how, double x, double y);
  void Number(double value);

  std::string& out_;
};

}  // namespace host
