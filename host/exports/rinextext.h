#pragma once

#include <array>
#include <string>
#include <string_view>

namespace host {

// Fields and lines of RINEX, which both versions have alike.

/// A line of a header: 60 characters, and what they are.
std::string HeaderLine(std::string content, std::string_view label);
/// The two first lines of a file; `kind` is what stands after the version.
std::string FileBeginning(double version, std::string_view kind);

/// The columns of a measurement, and those with the two digits after it.
constexpr std::size_t kMeasurementColumns = 14, kObservationColumns = 16;
/// A measurement with three decimals in 14 columns (F14.3); blank for 0 and for what does not fit.
void AppendMeasurement(std::string& text, double value);
/// A number of a navigation file: 19 columns with a Fortran exponent (D19.12); 0 for what is no number.
void AppendTerm(std::string& text, double value);

/// Earth-centred coordinates, in metres, of degrees and metres above the WGS 84 ellipsoid.
std::array<double, 3> Cartesian(double latitude, double longitude, double height);

}  // namespace host
