#include "host/tui/canvas.h"

#include <algorithm>
#include <iterator>

namespace host {

namespace {

char32_t PlainGlyph(char32_t glyph) {
  constexpr struct {
    char32_t glyph;
    char plain;
  } kPlain[] = {{U'─', '-'}, {U'│', '|'}, {U'┌', '+'}, {U'┐', '+'}, {U'└', '+'}, {U'┘', '+'}, {U'°', ' '},
                {U'·', '.'}, {U'●', '*'}, {U'○', 'o'}, {U'█', '#'}, {U'▒', ':'}, {U'▁', '_'}, {U'▂', '_'},
                {U'▃', '_'}, {U'▄', '#'}, {U'▅', '#'}, {U'▆', '#'}, {U'▇', '#'}};
  if (glyph < 0x80) return glyph;
  const auto* found = std::find_if(std::begin(kPlain), std::end(kPlain),
                                   [glyph](const auto& pair) { return pair.glyph == glyph; });
  return found == std::end(kPlain) ? U'?' : static_cast<char32_t>(found->plain);
}

/// Takes the first character off a text of UTF-8; "?" for a byte that begins none.
char32_t TakeGlyph(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const std::size_t length = first < 0x80           ? 1
                             : (first >> 5) == 0x06 ? 2
                             : (first >> 4) == 0x0E ? 3
                             : (first >> 3) == 0x1E ? 4
                                                    : 0;
  if (length == 0 || text.size() < length) {
    text.remove_prefix(1);
    return U'?';
  }
  char32_t glyph = length == 1 ? first : first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) glyph = glyph << 6 | (static_cast<unsigned char>(text[i]) & 0x3Fu);
  text.remove_prefix(length);
  return glyph;
}

void AppendUtf8(std::string& out, char32_t glyph) {
  const auto byte = [&out](char32_t value) { out += static_cast<char>(value); };
  if (glyph < 0x80) return byte(glyph);
  if (glyph < 0x800) return byte(0xC0 | glyph >> 6), byte(0x80 | (glyph & 0x3F));
  byte(0xE0 | glyph >> 12), byte(0x80 | (glyph >> 6 & 0x3F)), byte(0x80 | (glyph & 0x3F));
}

}  // namespace

Canvas::Canvas(int rows, int columns, bool unicode)
    : rows_(std::max(rows, 0)),
      columns_(std::max(columns, 0)),
      unicode_(unicode),
      cells_(static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_)) {}

void Canvas::Put(int row, int column, char32_t glyph, Style style) {
  if (row < 0 || row >= rows_ || column < 0 || column >= columns_) return;
  cells_[static_cast<std::size_t>(row * columns_ + column)] = {unicode_ ? glyph : PlainGlyph(glyph), style};
}

const Cell& Canvas::At(int row, int column) const {
  return cells_.at(static_cast<std::size_t>(row * columns_ + column));
}

std::string Canvas::Row(int row) const {
  std::string text;
  for (int column = 0; column < columns_; ++column) AppendUtf8(text, At(row, column).glyph);
  return text.erase(text.find_last_not_of(' ') + 1);
}

void Pane::Put(int row, int column, char32_t glyph, Style style) {
  if (row < 0 || row >= area_.rows || column < 0 || column >= area_.columns) return;
  canvas_.Put(area_.row + row, area_.column + column, glyph, style);
}

int Pane::Text(int row, int column, std::string_view text, Style style) {
  while (!text.empty()) Put(row, column++, TakeGlyph(text), style);
  return column;
}

void Pane::Right(int row, std::string_view text, Style style) {
  Text(row, Columns() - Width(text), text, style);
}

void Pane::Fill(Style style) {
  for (int row = 0; row < Rows(); ++row) {
    for (int column = 0; column < Columns(); ++column) Put(row, column, U' ', style);
  }
}

Pane Pane::Frame(std::string_view title) {
  Fill(Style::normal);
  const int bottom = Rows() - 1, right = Columns() - 1;
  for (int column = 1; column < right; ++column) {
    Put(0, column, U'─', Style::frame);
    Put(bottom, column, U'─', Style::frame);
  }
  for (int row = 1; row < bottom; ++row) {
    Put(row, 0, U'│', Style::frame);
    Put(row, right, U'│', Style::frame);
  }
  Put(0, 0, U'┌', Style::frame);
  Put(0, right, U'┐', Style::frame);
  Put(bottom, 0, U'└', Style::frame);
  Put(bottom, right, U'┘', Style::frame);
  Pane upper(canvas_, {area_.row, area_.column + 2, 1, std::max(area_.columns - 4, 0)});
  if (!title.empty()) upper.Text(0, 0, ' ' + std::string(title) + ' ', Style::label);
  return Pane(canvas_,
              {area_.row + 1, area_.column + 1, std::max(area_.rows - 2, 0), std::max(area_.columns - 2, 0)});
}

int Width(std::string_view text) {
  int width = 0;
  for (; !text.empty(); ++width) TakeGlyph(text);
  return width;
}

std::string Plain(std::string_view text) {
  std::string plain(text);
  std::replace_if(
      plain.begin(), plain.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return plain;
}

}  // namespace host
