#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gpsengine/face/words.h"
#include "host/run/face.h"

namespace host {

/// What a cell means; the terminal decides how it looks.
enum class Style {
  normal,
  dim,       ///< Old, or of little weight.
  label,     ///< The name of a value.
  value,     ///< What is read at a glance.
  title,     ///< The bar at the top and the one of the keys.
  good,      ///< A fix that may be trusted.
  warn,      ///< Something to know.
  bad,       ///< No fix, stale, lost.
  used,      ///< A satellite in the solution.
  in_view,   ///< A satellite beside it.
  frame,     ///< Lines around panels.
  selected,  ///< The line under the cursor.
  count
};

struct Cell {
  char32_t glyph = U' ';
  Style style = Style::normal;
  bool operator==(const Cell&) const = default;
};

/// A rectangle of a canvas.
struct Area {
  int row = 0, column = 0, rows = 0, columns = 0;
};

/// A screen that is drawn in memory. Who draws uses lines and marks of Unicode; where the terminal has none,
/// plain characters take their place. What falls outside is not drawn.
class Canvas {
 public:
  Canvas(int rows, int columns, bool unicode);

  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  Area Whole() const { return {0, 0, rows_, columns_}; }
  void Put(int row, int column, char32_t glyph, Style style);
  const Cell& At(int row, int column) const;
  /// A row as UTF-8, without the blanks at its end.
  std::string Row(int row) const;

 private:
  int rows_, columns_;
  bool unicode_;
  std::vector<Cell> cells_;
};

/// A part of a canvas with rows and columns of its own. Nothing is drawn outside it.
class Pane {
 public:
  Pane(Canvas& canvas, const Area& area) : canvas_(canvas), area_(area) {}

  int Rows() const { return area_.rows; }
  int Columns() const { return area_.columns; }
  void Put(int row, int column, char32_t glyph, Style style);
  /// UTF-8, cut at the pane's edge. Gives the column after it.
  int Text(int row, int column, std::string_view text, Style style = Style::normal);
  /// Text that ends at the pane's right edge.
  void Right(int row, std::string_view text, Style style = Style::normal);
  void Fill(Style style);
  /// A frame along the pane's edge, a title in its upper line and what is inside, which is cleared.
  Pane Frame(std::string_view title);

 private:
  Canvas& canvas_;
  Area area_;
};

/// How many columns a text of UTF-8 takes.
int Width(std::string_view text);
/// A text from outside with only what every terminal shows as it is.
std::string Plain(std::string_view text);

}  // namespace host
