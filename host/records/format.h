#pragma once

#include <memory>
#include <string>

#include "host/records/display.h"
#include "host/records/sink.h"

namespace host {

/// How records are shown: as lines, or not at all, or on the screen of a terminal, which is no sink of
/// MakeSink.
enum class Format { text, json, record, none, tui };

/// A sink of that format, which appends to `out`. `device` and `geoid` are for "json", `display` for "text".
std::unique_ptr<Sink> MakeSink(Format format, std::string& out, const std::string& device, Geoid geoid,
                               const Display& display = {});

}  // namespace host
