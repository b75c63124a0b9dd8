#pragma once

#include "host/tui/canvas.h"

namespace host {

struct View;

// The panels of the screen. Each fills its pane and makes do with the room that it has.

void DrawFix(Pane pane, const View& view);
void DrawSurvey(Pane pane, const View& view);
void DrawSky(Pane pane, const View& view);
void DrawSignals(Pane pane, const View& view);
void DrawSatellites(Pane pane, const View& view);
void DrawReports(Pane pane, const View& view);
void DrawSentences(Pane pane, const View& view);
void DrawCounters(Pane pane, const View& view);

}  // namespace host
