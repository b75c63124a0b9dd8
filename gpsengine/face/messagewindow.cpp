#include "gpsengine/face/messagewindow.h"

#include <utility>

#include "gpsengine/face/answerreader.h"
#include "gpsengine/platform/application.h"
#include "gpsengine/receiver/messages.h"
#include "gpsengine/sentences/fields.h"

namespace gps {

MessageWindow::MessageWindow(CGPSEngine& engine, std::function<void(Record&&)> tell)
    : engine_(engine), tell_(std::move(tell)) {}

void MessageWindow::Open() {
  Create();
  AfxGetApp()->SetMainWnd(this);
  engine_.m_ComBuffer.KeepCapturing(wants_skies_ || wants_reports_);
}

void MessageWindow::Finish() {
  Tell(skies_.Finish());
}

void MessageWindow::OnNewData(const CGPSData& data) {
  if (data.m_bPositionValid) tell_(fixes_.Read(data));
  std::vector<Report> news = reports_.NewsIn(data);
  has_told_ = !news.empty();
  for (Report& report : news) tell_(std::move(report));
  if (wants_skies_) Tell(skies_.OnData(data));
}

void MessageWindow::OnNewString(const CString& text) {
  const bool is_news = !std::exchange(has_told_, false) && wants_reports_ && IsAnswer(text);
  if (!(wants_skies_ || is_news) || !text.ToBytes(bytes_)) return;
  if (wants_skies_) Tell(skies_.OnText(Fields(bytes_)));
  if (!is_news) return;
  bytes_.erase(bytes_.find_last_not_of("\r\n") + 1);
  tell_(Report{"text", "text", bytes_});
}

void MessageWindow::OnNewRawData(const CGPSDataRaw& data) {
  Raw raw{"MBN", {}, {}, {}};
  raw.epoch.emplace();
  raw.epoch->week = data.m_nGPSWeek;
  raw.epoch->time_of_week = data.m_dReceiverTime;
  raw.epoch->signals = SignalsOf(data);
  tell_(std::move(raw));
}

void MessageWindow::OnNewEphemeris(const CGPSDataEphemeris& data) {
  Raw raw{"SNV", {}, {}, {}};
  raw.ephemeris.emplace().orbit = data;
  tell_(std::move(raw));
}

void MessageWindow::OnNewBin() {
  const auto words = rawdata::WordsOf(engine_.GetReceiver()->m_BinWords);
  const Block block = blocks_.Read(words);
  Raw raw{block.Name(), {words.begin(), words.end()}, {}, {}};
  if (block.epoch != nullptr) raw.epoch = *block.epoch;
  if (block.ephemeris != nullptr) raw.ephemeris = *block.ephemeris;
  tell_(std::move(raw));
}

void MessageWindow::Tell(const Sky* sky) {
  if (sky != nullptr) tell_(*sky);
}

}  // namespace gps
