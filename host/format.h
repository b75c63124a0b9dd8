#pragma once

#include <memory>
#include <string>

#include "host/geoid.h"
#include "host/sink.h"

namespace host {

/// How records are shown.
enum class Format { text, json, record, none };

/// A sink of that format, which appends to `out`. `device` and `geoid` are for "json".
std::unique_ptr<Sink> MakeSink(Format format, std::string& out, const std::string& device, Geoid geoid);

}  // namespace host
