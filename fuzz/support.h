#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/platform/rehearsal.h"

// What the fuzz targets share: the host that looks at everything it gets, and the bytes of an input taken
// apart.

/// Ends the run with a finding if the claim does not hold.
void Require(bool bClaim, const char* pszClaim);

/// An input: some bytes that choose, then the data.
class Input {
 public:
  Input(const std::uint8_t* pData, std::size_t nSize) : m_Rest(reinterpret_cast<const char*>(pData), nSize) {}

  bool IsEmpty() const { return m_Rest.empty(); }
  /// The next byte; 0 at the end.
  unsigned Byte();
  /// The next `nCount` bytes, or as many as there are.
  std::string_view Take(std::size_t nCount);
  std::string_view Rest() const { return m_Rest; }
  /// The data up to the next `delimiter`, which is taken too.
  std::string_view TakeThrough(char delimiter);

 private:
  std::string_view m_Rest;
};

/// The next character of a text: one byte or, if `bWide`, two.
CString TextOf(std::string_view bytes, bool bWide = false);

/// A main window that checks what the library posts and frees it.
class CheckingWindow : public CGPSWindow {
 public:
  CheckingWindow() { Create(); }

  /// A position at this time of day has come since Forget.
  bool HasFix(double dTimeOfDay) const { return m_dLastFix == dTimeOfDay; }
  void Forget() { m_dLastFix = -1.0; }

 private:
  void OnNewData(const CGPSData& data) override;
  void OnNewString(const CString& text) override;
  void OnNewRawData(const CGPSDataRaw& epoch) override;
  void OnNewEphemeris(const CGPSDataEphemeris& ephemeris) override;

  double m_dLastFix = -1.0;
};

/// An engine on one thread in rehearsed time, its receiver's port open. One for the whole process, and each
/// input starts it over.
class Rig {
 public:
  static Rig& Instance();

  /// Selects a model by any number, with nothing left of what came before.
  CGPSReceiver& StartOver(unsigned nModel, int nGeoidMode);
  /// Hands bytes to the engine, and what it publishes to the window.
  void Feed(std::string_view bytes);

  CRehearsal line;
  CWinApp app{"gpsengine-fuzz"};
  CheckingWindow window;
  CGPSEngine engine;

 private:
  Rig() { app.SetMainWnd(&window); }
};

/// Writes a file beside this program again; gives its path. Each target has a folder of its own.
std::string WriteFile(const std::string& strName, std::string_view content);

/// Gives the sentences and binary records in the bytes their right checksums, so that mutated ones reach
/// their decoders.
void RepairChecksums(std::uint8_t* pData, std::size_t nSize);
