#pragma once

#include <algorithm>
#include <string_view>

#include "gpsengine/drivers/plain.h"
#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"

namespace bench {

/// Takes the records and deletes them, as a host does.
class Window : public CGPSWindow {
 public:
  Window() { Create(); }
};

struct Host {
  Host() { app.SetMainWnd(&window); }
  CWinApp app{"gpsengine-bench"};
  Window window;
  COtherGps receiver;
};

/// From bytes to drained records, in reads of `chunk` bytes.
inline void FeedEngine(CGPSEngine& engine, Window& window, std::string_view bytes, std::size_t chunk) {
  for (std::size_t at = 0; at < bytes.size(); at += chunk) {
    const std::string_view piece = bytes.substr(at, chunk);
    CBinBuffer data(piece.data(), static_cast<int>(piece.size()));
    engine.UpdateGPSBuffer(data);
    window.Drain();
  }
}

}  // namespace bench
