#pragma once

#include "gpsengine/engine/gpsengine.h"
#include "gpsengine/platform/messagebox.h"
#include "tests/support/pseudoterminal.h"
#include "tests/support/receivertest.h"

/// A receiver of a host's own that does something with each message before it is decoded, or after.
class Hooked : public COtherGps {
 public:
  using Hook = std::function<void(Hooked& self, const CString& message)>;
  explicit Hooked(Hook before = {}, Hook after = {})
      : m_Before(std::move(before)), m_After(std::move(after)) {}

  CString GetName() override { return "Hooked"; }
  using COtherGps::Parse;
  bool Parse(CString& strMessage) override {
    if (m_Before) m_Before(*this, strMessage);
    const bool published = COtherGps::Parse(strMessage);
    if (m_After) m_After(*this, strMessage);
    return published;
  }
  CSerialPort& Port() { return m_Port; }

 private:
  const Hook m_Before, m_After;
};

/// An engine with a window that keeps what comes, and the texts of its message boxes.
class EngineTest : public testing::Test {
 protected:
  static constexpr int kPort = 9;

  EngineTest() {
    app.SetMainWnd(&window);
    SetMessageBoxHandler([this](const CString& text, BoxKind) { boxes.push_back(text.ToUtf8()); });
    Select("Other");
  }
  ~EngineTest() override {
    engine.Stop();
    SetMessageBoxHandler(nullptr);
  }

  void SelectHooked(Hooked::Hook before, Hooked::Hook after = {}) {
    engine.AddReceiver(new Hooked(std::move(before), std::move(after)));
    Select("Hooked");
  }
  void Select(const char* name) {
    CGPSReceiver* receiver = engine.FindReceiver(name);
    receiver->SetupReceiver(kPort, 0, 0.0, "", false);
    engine.SetReceiver(receiver);
  }
  bool Feed(std::string_view bytes) {
    CBinBuffer chunk(bytes.data(), static_cast<int>(bytes.size()));
    const bool published = engine.UpdateGPSBuffer(chunk);
    window.Drain();
    return published;
  }
  /// Handles messages until the condition holds.
  bool Until(const std::function<bool()>& condition, DWORD limit = 5000) {
    const auto end = CurrentClock().Milliseconds() + limit;
    while (!condition() && CurrentClock().Milliseconds() < end) {
      MsgWaitForMultipleObjects(0, nullptr, 10);
      window.Drain();
    }
    return condition();
  }
  bool UntilRecords(std::size_t count) {
    return Until([&] { return window.records.size() >= count; });
  }

  CWinApp app{"gpsengine-test"};
  HostWindow window;
  std::vector<std::string> boxes;
  CGPSEngine engine;
};

/// The same on a live line.
class LiveEngineTest : public EngineTest {
 protected:
  LiveEngineTest() { MapComPort(kPort, CString::FromUtf8(terminal.Name())); }
  PseudoTerminal terminal;
};
