#pragma once

#include <map>
#include <optional>
#include <vector>

namespace host {

/// A track as a drawing shows it, in bounded memory however long it is. It leaves out points that do not bend
/// the line, and lines that were drawn before. No place of the track then lies two pixels off a drawing a
/// thousand pixels wide, unless the track scribbles all over it.
class Sketch {
 public:
  struct Point {
    double east, north;  ///< Metres.
    int signal;          ///< The kind of fix, which the line that leads here has too.
    bool broken;         ///< No line leads here from the point before.
  };

  void Add(const Point& point);
  /// The line so far, up to the last place that was added unless it is drawn already.
  std::vector<Point> Points() const;
  const std::optional<Point>& Last() const { return last_; }
  /// How fine it is, in metres.
  double Cell() const;

 private:
  /// A place in the grid that the drawing is measured by, in cells.
  struct Place {
    double x, y;
  };
  /// The directions in which a straight line from an anchor passes all places since close by.
  class Cone {
   public:
    /// Whether a line to this place, seen from the anchor, does; it then counts.
    bool Takes(const Place& offset);

   private:
    bool narrow_ = false;
    Place left_{}, right_{};
    double far_ = 0.0;
  };

  bool Widen(const Point& point);
  void Rebuild();
  Place PlaceOf(const Point& point) const;
  void Follow(const Point& point);
  void Draw();
  bool Cover(const Place& from, const Place& to, int signal);

  double south_ = 0.0, north_ = 0.0, west_ = 0.0, east_ = 0.0;  // how far it goes
  double side_ = 0.1;                                           // of the grid; the track fits in
  std::vector<Point> points_;
  std::map<int, std::vector<bool>> covered_;  // the cells with a line, by its kind of fix
  std::optional<Point> last_;
  // The current line, from its last corner to the last place.
  std::optional<Point> anchor_, end_;
  Cone cone_;
  bool joined_ = false;  // the anchor is the last of the points
};

}  // namespace host
