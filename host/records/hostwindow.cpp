#include "host/records/hostwindow.h"

#include <algorithm>
#include <utility>

namespace host {

HostWindow::HostWindow(long long limit) : limit_(limit) {
  Create();
  if (CWinApp* app = AfxGetApp()) app->SetMainWnd(this);
}

HostWindow::~HostWindow() {
  DestroyWindow();
}

void HostWindow::SetReference(std::optional<Moment> reference) {
  epochs_.SetReference(reference);
  for (Sink* sink : sinks_) sink->SetReference(reference);
}

bool HostWindow::WantsSky() {
  wants_sky_ = std::any_of(sinks_.begin(), sinks_.end(), [](const Sink* sink) { return sink->WantsSky(); });
  return wants_sky_;
}

void HostWindow::EndSky() {
  ShowSky(skies_.Finish());
  skies_ = SkySource();
  blocks_.Forget();
}

void HostWindow::ShowSky(const Sky* sky) {
  if (sky != nullptr && !IsFull()) Show(&Sink::OnSky, *sky);
}

void HostWindow::OnNewData(const CGPSData& data) {
  published_.unread += data.m_bProprietaryValid ? 1 : 0;
  owes_text_ = !IsFull();
  if (sinks_.empty()) {
    ++published_.data;
    return;
  }
  Publish(published_.data, &Sink::OnData, ReadRecord(epochs_, data));
  if (wants_sky_) ShowSky(skies_.OnData(data));
}

void HostWindow::OnNewRawData(const CGPSDataRaw& epoch) {
  Publish(published_.raw_data, &Sink::OnRawData, epoch);
}

void HostWindow::OnNewEphemeris(const CGPSDataEphemeris& ephemeris) {
  Publish(published_.ephemeris, &Sink::OnEphemeris, ephemeris);
}

void HostWindow::OnNewBin() {
  ++published_.bin;
  if (IsFull()) return;
  Block block;
  if (receiver_ != nullptr) block = blocks_.Read(rawdata::WordsOf(receiver_->m_BinWords));
  published_.read_bin += block.IsRead() ? 1 : 0;
  Show(&Sink::OnBin, block);
}

void HostWindow::OnNewString(const CString& text) {
  const auto length = static_cast<std::size_t>(text.GetLength());
  if (bytes_.size() < length) bytes_.resize(length);
  const bool is_read = wants_sky_ && text.ToBytes(bytes_.data());
  const Fields sentence(is_read ? std::string_view(bytes_.data(), length) : std::string_view());
  if (is_read) ShowSky(skies_.OnText(sentence));
  // That of the last record that was shown is told too.
  if (!std::exchange(owes_text_, false) && IsFull()) return;
  bool shown = false;
  for (Sink* sink : sinks_) {
    if (sentence) shown |= sink->OnSentence(sentence);
    shown |= sink->OnString(text);
  }
  shown_ += shown ? 1 : 0;
}

}  // namespace host
