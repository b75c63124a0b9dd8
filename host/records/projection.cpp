#include "host/records/projection.h"

#include <proj.h>

#include <algorithm>
#include <cmath>

#include "host/run/failure.h"

namespace host {

namespace {

struct Destroy {
  void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
  void operator()(PJ* object) const { proj_destroy(object); }
};
using Context = std::unique_ptr<PJ_CONTEXT, Destroy>;
using Object = std::unique_ptr<PJ, Destroy>;

/// The zone of a place, with those that are wider at Norway and Svalbard.
int UtmZone(double latitude, double longitude) {
  if (latitude >= 56.0 && latitude < 64.0 && longitude >= 3.0 && longitude < 12.0) return 32;
  if (latitude >= 72.0 && longitude >= 0.0 && longitude < 42.0) {
    return longitude < 9.0 ? 31 : longitude < 21.0 ? 33 : longitude < 33.0 ? 35 : 37;
  }
  return static_cast<int>(std::floor((longitude + 180.0) / 6.0)) % 60 + 1;
}

std::string UtmCode(double latitude, double longitude) {
  const std::string zone = std::to_string(UtmZone(latitude, longitude));
  return (latitude < 0.0 ? "EPSG:327" : "EPSG:326") + std::string(zone.size() < 2 ? "0" : "") + zone;
}

/// The part of a system that tells places on the ground.
Object Horizontal(PJ_CONTEXT* context, Object system) {
  while (system) {
    const PJ_TYPE type = proj_get_type(system.get());
    if (type == PJ_TYPE_BOUND_CRS) {
      system.reset(proj_get_source_crs(context, system.get()));
    } else if (type == PJ_TYPE_COMPOUND_CRS) {
      system.reset(proj_crs_get_sub_crs(context, system.get(), 0));
    } else {
      break;
    }
  }
  return system;
}

}  // namespace

struct Projection::Library {
  Context context{proj_context_create()};
  Object transformation;  // none until a zone is chosen
};

Projection::Projection(const std::string& code) : library_(std::make_unique<Library>()), name_(code) {
  PJ_CONTEXT* const context = library_->context.get();
  proj_log_level(context, PJ_LOG_NONE);
  proj_context_set_enable_network(context, 0);
  if (code == "utm") {
    Choose("EPSG:32632");  // tells now whether PROJ finds its tables
    library_->transformation.reset();
    name_ = code;
  } else {
    Choose(code);
  }
}

Projection::~Projection() = default;

void Projection::Choose(const std::string& code) {
  PJ_CONTEXT* const context = library_->context.get();
  // PROJ would take any other word for the beginning of some system's name.
  const bool is_text = code.find("+proj") != std::string::npos;
  const bool is_code = code.find_first_of(":[{") != std::string::npos;
  const Object system(
      is_text || is_code ? proj_create(context, (is_text ? code + " +type=crs" : code).c_str()) : nullptr);
  if (!system || proj_is_crs(system.get()) == 0) {
    throw Failure(ExitCode::usage, "--crs " + code +
                                       " is no reference system that PROJ knows, such as EPSG:25832, and not "
                                       "utm");
  }
  const Object ground = Horizontal(context, Object(proj_clone(context, system.get())));
  if (!ground || proj_get_type(ground.get()) != PJ_TYPE_PROJECTED_CRS) {
    throw Failure(ExitCode::usage, "--crs " + code +
                                       " has no eastings and northings: name a projected system, such as "
                                       "EPSG:25832, or utm");
  }
  const Object earth(proj_create(context, "EPSG:4326"));
  const Object either(
      earth ? proj_create_crs_to_crs_from_pj(context, earth.get(), system.get(), nullptr, nullptr) : nullptr);
  // Longitude before latitude, easting before northing, whatever order the systems have.
  Object ordered(either ? proj_normalize_for_visualization(context, either.get()) : nullptr);
  const Object axes(proj_crs_get_coordinate_system(context, ground.get()));
  const char* unit = nullptr;
  if (!ordered || !axes ||
      proj_cs_get_axis_info(context, axes.get(), 0, nullptr, nullptr, nullptr, &metres_, &unit, nullptr,
                            nullptr) == 0) {
    throw Failure(ExitCode::usage, "--crs " + code + ": PROJ has no way there from WGS 84");
  }
  name_ = code;
  unit_ = metres_ == 1.0 ? "m" : unit;
  library_->transformation = std::move(ordered);
}

std::optional<Projection::Place> Projection::Of(double latitude, double longitude) {
  if (!(std::fabs(latitude) <= 90.0 && std::fabs(longitude) <= 180.0)) return std::nullopt;
  if (!library_->transformation) Choose(UtmCode(latitude, longitude));
  PJ* const transformation = library_->transformation.get();
  proj_errno_reset(transformation);
  const PJ_COORD place = proj_trans(transformation, PJ_FWD, proj_coord(longitude, latitude, 0.0, HUGE_VAL));
  if (!std::isfinite(place.xy.x) || !std::isfinite(place.xy.y)) return std::nullopt;
  return Place{place.xy.x, place.xy.y};
}

std::string Projection::Version() {
  return std::string("PROJ ") + proj_info().version;
}

}  // namespace host
