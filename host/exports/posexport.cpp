#include <cstdio>
#include <cstdlib>

#include "host/exports/export.h"
#include "host/records/fixkind.h"

namespace host {

namespace {

/// Solutions in the text form of RTKLIB. It states for the whole file what heights are above, which the first
/// fix decides: the ellipsoid, where that is known.
class PosExport : public GrowingExport {
 public:
  explicit PosExport(const ExportPath& path) : GrowingExport(path) {}

  void OnEpoch(const PositionEpoch& epoch) override {
    if (!epoch.valid) return;
    if (epoch.tail.separation) separation_ = epoch.tail.separation;
    if (!has_head_) AppendHead(separation_.has_value());
    std::string iso = IsoText(*epoch.time);
    for (const std::size_t dash : {4, 7}) iso[dash] = '/';
    double height = epoch.height_msl.value_or(0.0);
    if (epoch.height_msl && above_ellipsoid_) height += *separation_;
    // Deviations and ratio are not known, and 0 then.
    constexpr double kUnknown = 0.0;
    char line[400];
    std::snprintf(line, sizeof line,
                  "%s %s %14.9f %14.9f %10.4f %3d %3d %8.4f %8.4f %8.4f %8.4f %8.4f %8.4f %6.2f %6.1f\n",
                  iso.substr(0, 10).c_str(), iso.substr(11, 12).c_str(), epoch.latitude, epoch.longitude,
                  height, FixKindOf(epoch.signal).rtklib, epoch.used, kUnknown, kUnknown, kUnknown, kUnknown,
                  kUnknown, kUnknown, std::strtod(epoch.tail.age.c_str(), nullptr), kUnknown);
    Text() += line;
  }

 private:
  void AppendHead(bool above_ellipsoid) {
    has_head_ = true;
    above_ellipsoid_ = above_ellipsoid;
    ((Text() += "% program   : gpsengine " GPSENGINE_VERSION "\n% (lat/lon/height=WGS84/") +=
     above_ellipsoid ? "ellipsoidal" : "geodetic") +=
        ",Q=1:fix,2:float,3:sbas,4:dgps,5:single,6:ppp,ns=# of satellites)\n"
        "%  UTC                   latitude(deg) longitude(deg)  height(m)   Q  ns   sdn(m)   sde(m)   sdu(m) "
        " "
        "sdne(m)  sdeu(m)  sdun(m) age(s)  ratio\n";
  }

  bool has_head_ = false, above_ellipsoid_ = false;
  std::optional<double> separation_;  // the last one that was stated
};

}  // namespace

std::unique_ptr<Export> MakePosExport(const ExportPath& path, const RunFacts&) {
  return std::make_unique<PosExport>(path);
}

}  // namespace host
