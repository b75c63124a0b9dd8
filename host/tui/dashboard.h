#pragma once

#include <optional>
#include <string>

#include "gpsengine/face/tally.h"
#include "host/corrections/link.h"
#include "host/records/display.h"
#include "host/run/face.h"
#include "host/tui/canvas.h"
#include "host/tui/readings.h"

namespace host {

/// All that a screen shows.
struct View {
  explicit View(const Readings& shown) : readings(shown) {}

  const Readings& readings;
  std::string model;
  std::string source;  ///< Where the bytes come from.
  Tally counters;
  Display display = {};
  Geoid geoid = Geoid::none;
  bool is_live = true;                          ///< Times are of the date that this computer has.
  bool survey = false;                          ///< The survey has the place of the sky.
  bool sentences = false;                       ///< The stream of sentences has a panel.
  std::optional<CorrectionStatus> corrections;  ///< None if none are wanted.
  std::string status;                           ///< The line above the keys.
  Style status_style = Style::normal;
};

/// Draws the screen. Panels are as large as there is room for, and left out where there is none.
void DrawDashboard(Canvas& canvas, const View& view);
/// The list of keys and marks, in the middle of the screen.
void DrawHelp(Canvas& canvas);
/// The rectangle in the middle of a canvas that comes nearest to that size.
Area Middle(const Canvas& canvas, int rows, int columns);

}  // namespace host
