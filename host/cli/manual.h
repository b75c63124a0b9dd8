#pragma once

#include <CLI/App.hpp>
#include <string>

namespace host {

/// The manual page, in the language of man, made out of what the command line says of itself, so that it has
/// what the help has. Commands without a group are left out, as the help leaves them out.
std::string ManualPage(const CLI::App& app, const std::string& version);

}  // namespace host
