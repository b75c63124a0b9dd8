#pragma once

namespace host {

/// What to do with the geoid separation of a position sentence, in the numbers that
/// CGPSReceiver::SetupReceiver takes.
enum class Geoid : int { none = 0, add = 1, subtract = 2 };

}  // namespace host
