#include "host/exports/svg.h"

#include <cmath>

#include "host/exports/markup.h"
#include "host/records/jsonwriter.h"

namespace host {

Svg::Svg(std::string& out, double width, double height, std::string_view label) : out_(out) {
  out_ += "<svg viewBox=\"0 0 ";
  Number(width);
  out_ += ' ';
  Number(height);
  out_ += "\" role=\"img\" aria-label=\"";
  AppendMarkup(out_, label);
  out_ += "\">\n";
}

void Svg::Number(double value) {
  std::string digits;
  AppendFixed(digits, std::isfinite(value) ? value : 0.0, 1);
  if (digits.ends_with(".0")) digits.resize(digits.size() - 2);
  out_ += digits;
}

void Svg::Begin(std::string_view tag, std::string_view style,
                std::initializer_list<std::pair<std::string_view, double>> attributes) {
  ((out_ += '<') += tag) += " class=\"";
  (out_ += style) += '"';
  for (const auto& [name, value] : attributes) {
    ((out_ += ' ') += name) += "=\"";
    Number(value);
    out_ += '"';
  }
}

void Svg::End(std::string_view tag, std::string_view title) {
  if (title.empty()) {
    out_ += "/>\n";
    return;
  }
  out_ += "><title>";
  AppendMarkup(out_, title);
  ((out_ += "</title></") += tag) += ">\n";
}

void Svg::Line(std::string_view style, double x1, double y1, double x2, double y2) {
  Begin("line", style, {{"x1", x1}, {"y1", y1}, {"x2", x2}, {"y2", y2}});
  End("line", {});
}

void Svg::Rect(std::string_view style, double x, double y, double width, double height, double radius,
               std::string_view title) {
  Begin("rect", style, {{"x", x}, {"y", y}, {"width", width}, {"height", height}, {"rx", radius}});
  End("rect", title);
}

void Svg::Circle(std::string_view style, double x, double y, double radius, std::string_view title) {
  Begin("circle", style, {{"cx", x}, {"cy", y}, {"r", radius}});
  End("circle", title);
}

void Svg::Text(std::string_view style, double x, double y, std::string_view text, Anchor anchor) {
  Begin("text", style, {{"x", x}, {"y", y}});
  constexpr std::string_view kAnchors[] = {"start", "middle", "end"};
  ((out_ += " text-anchor=\"") += kAnchors[static_cast<int>(anchor)]) += "\">";
  AppendMarkup(out_, text);
  out_ += "</text>\n";
}

void Svg::Upright(std::string_view style, double x, double y, std::string_view text) {
  ((out_ += "<text class=\"") += style) += "\" text-anchor=\"middle\" transform=\"translate(";
  Number(x);
  out_ += ' ';
  Number(y);
  out_ += ") rotate(-90)\">";
  AppendMarkup(out_, text);
  out_ += "</text>\n";
}

void Svg::BeginPath(std::string_view style) {
  ((out_ += "<path class=\"") += style) += "\" d=\"";
}

void Svg::Go(char how, double x, double y) {
  out_ += how;
  Number(x);
  out_ += ' ';
  Number(y);
}

}  // namespace host
