#pragma once

#include <memory>
#include <optional>
#include <string>

namespace host {

/// Makes eastings and northings of latitudes and longitudes, by the library PROJ. In a build without that no
/// object can be made.
class Projection {
 public:
  struct Place {
    double easting, northing;  ///< In the unit of the system.
  };

  /// `code` is a code or a text by which PROJ knows the system, or "utm", which is the zone of the first
  /// place that is asked for. Throws a Failure that names a code that is none.
  explicit Projection(const std::string& code);
  ~Projection();
  Projection(const Projection&) = delete;
  Projection& operator=(const Projection&) = delete;

  /// A place by its degrees on WGS 84; none where the system has none.
  std::optional<Place> Of(double latitude, double longitude);
  /// The code that is in use, or "utm" before the first place.
  const std::string& Name() const { return name_; }
  /// "m", or the unit's name.
  const std::string& UnitName() const { return unit_; }
  /// Of a unit.
  double Metres() const { return metres_; }

  /// "PROJ 9.1.1", or that it is not there.
  static std::string Version();

 private:
  struct Library;  // of PROJ

  void Choose(const std::string& code);

  std::unique_ptr<Library> library_;
  std::string name_, unit_ = "m";
  double metres_ = 1.0;
};

}  // namespace host
