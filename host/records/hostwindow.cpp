#include "host/records/hostwindow.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "gpsengine/receiver/messages.h"

namespace host {

namespace {

template <class T>
std::unique_ptr<T> Take(WPARAM wParam) {
  return std::unique_ptr<T>(reinterpret_cast<T*>(wParam));
}

}  // namespace

HostWindow::HostWindow(long long limit) : limit_(limit) {
  Create();
  if (CWinApp* app = AfxGetApp()) app->SetMainWnd(this);
}

HostWindow::~HostWindow() {
  DestroyWindow();
}

void HostWindow::SetReference(std::optional<Moment> reference) {
  for (Sink* sink : sinks_) sink->SetReference(reference);
}

bool HostWindow::WantsSky() const {
  return std::any_of(sinks_.begin(), sinks_.end(), [](const Sink* sink) { return sink->WantsSky(); });
}

void HostWindow::EndSky() {
  ShowSky(skies_.Finish());
  skies_ = SkySource();
}

void HostWindow::ShowSky(const Sky* sky) {
  if (sky != nullptr && !IsFull()) Show(&Sink::OnSky, *sky);
}

void HostWindow::Drain() {
  for (MSG message; PeekMessageW(&message, PM_REMOVE);) DispatchMessageW(message);
}

void HostWindow::OnText(const CString& text) {
  std::optional<Fields> sentence;
  if (WantsSky() && text.ToBytes(bytes_)) ShowSky(skies_.OnText(sentence.emplace(bytes_)));
  // That of the last record that was shown is told too.
  if (!std::exchange(owes_text_, false) && IsFull()) return;
  bool shown = sentence && *sentence && ShowAll(&Sink::OnSentence, *sentence);
  shown |= ShowAll(&Sink::OnString, text);
  shown_ += shown ? 1 : 0;
}

LRESULT HostWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_GPS_NEW_DATA: {
      const auto data = Take<CGPSData>(wParam);
      ++published_.data;
      published_.unread += data->m_bProprietaryValid ? 1 : 0;
      owes_text_ = !IsFull();
      if (!IsFull()) Show(&Sink::OnData, *data);
      if (WantsSky()) ShowSky(skies_.OnData(*data));
      return 0;
    }
    case WM_GPS_NEW_RAW_DATA: {
      const auto epoch = Take<CGPSDataRaw>(wParam);
      ++published_.raw_data;
      if (!IsFull()) Show(&Sink::OnRawData, *epoch);
      return 0;
    }
    case WM_GPS_NEW_EPHEMERIS: {
      const auto ephemeris = Take<CGPSDataEphemeris>(wParam);
      ++published_.ephemeris;
      if (!IsFull()) Show(&Sink::OnEphemeris, *ephemeris);
      return 0;
    }
    case WM_GPS_NEW_BIN:
      ++published_.bin;
      if (!IsFull()) Show(&Sink::OnBin);
      return 0;
    case WM_GPS_NEW_STRING: {
      const auto text = Take<CString>(wParam);
      OnText(*text);
      return 0;
    }
    default:
      return CWnd::WindowProc(message, wParam, lParam);
  }
}

}  // namespace host
