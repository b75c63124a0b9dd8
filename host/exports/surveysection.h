#pragma once

#include <string>
#include <string_view>

#include "host/records/display.h"
#include "host/records/survey.h"

namespace host {

/// The section of a report about a receiver that stands still; nothing for one that has moved. There are
/// fixes.
void AddSurveySection(std::string& out, const Survey& survey, const Display& display,
                      std::string_view height_name);

}  // namespace host
