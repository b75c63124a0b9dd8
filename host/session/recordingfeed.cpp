#include "host/session/recordingfeed.h"

#include <algorithm>

#include "host/line/kindlistener.h"
#include "host/run/face.h"

namespace host {

namespace {

// What is read, and the most that is played, at a time. The engine takes up to 16 KB.
constexpr std::size_t kPiece = 4096;
// Bytes without a line end are played in lines of this length.
constexpr std::size_t kLongestLine = 512;
// From this size on a file takes long enough for someone to wonder.
constexpr std::int64_t kLargeFile = 8 << 20;

std::string NameOf(const std::vector<std::string>& files) {
  if (files.size() == 1) return files.front();
  return files.front() + " and " + std::to_string(files.size() - 1) + " more";
}

}  // namespace

RecordingFeed::RecordingFeed(const std::vector<std::string>& files)
    : Feed(Kind::recording, NameOf(files)), files_(files) {
  for (const std::string& file : files) {
    recordings_.emplace_back(file);
    size_ += recordings_.back().Size();
  }
}

void RecordingFeed::ShowProgress(const std::string& label, bool output_is_busy) {
  progress_.emplace(label, static_cast<double>(size_),
                    size_ >= kLargeFile && CanShowProgress(output_is_busy));
}

void RecordingFeed::Open(CGPSEngine& engine, HostWindow& window) {
  clock_.emplace();
  // Without what the make would set up: there is no receiver to hear it.
  engine.GetReceiver()->CGPSReceiver::Initialize();
  window_ = &window;
  window.SetReference(date_);
  Date(Current().Head());  // it may have its date some way after its first fix
}

/// Tells when the recording was made, as far as it says so itself.
void RecordingFeed::Date(std::string_view bytes) {
  if (!scans_) return;
  dates_.Feed(bytes);
  window_->SetReference(dates_.Latest());
}

void RecordingFeed::Step() {
  const auto bytes = Current().Next(chunk_);
  if (bytes.empty()) {
    at_end_ = !GoOn();
  } else {
    Play(bytes);
  }
}

bool RecordingFeed::GoOn() {
  if (recordings_.size() < 2) return false;
  // A sentence that the end of a recording has cut is not to take the first one of the next with it.
  if (in_line_) {
    Play("\r\n");
    return true;
  }
  done_ += Current().Size();
  recordings_.pop_front();
  dates_ = DateScan();
  Date(Current().Head());
  return true;
}

void RecordingFeed::Play(std::string_view bytes) {
  Date(bytes);
  in_line_ = bytes.back() != '\n';
  played_ += bytes;
}

void RecordingFeed::Decode(CGPSEngine& engine, std::string_view bytes) {
  const std::string_view guarded = guard_.Pass(bytes);
  CBinBuffer chunk(guarded.data(), static_cast<int>(guarded.size()));
  const CPostAtOnce to_window(*window_);
  engine.UpdateGPSBuffer(chunk);
  if (progress_) progress_->Update(static_cast<double>(done_ + Current().Done()));
}

void RecordingFeed::CheckUnderstood(const HostWindow& window) const {
  if (at_end_) host::CheckUnderstood(recordings_.front(), window);
}

PacedFeed::PacedFeed(const std::string& file, double speed) : RecordingFeed({file}), speed_(speed) {}

void PacedFeed::Open(CGPSEngine& engine, HostWindow& window) {
  RecordingFeed::Open(engine, window);
  if (speed_ < kMax) pacer_.emplace(speed_, Current().Head(), engine.GetReceiver()->GetCurrentBaudrate());
  due_ = Clock::now();
  ReadLine();
}

void PacedFeed::ReadLine() {
  std::size_t end = bytes_.find('\n', taken_);
  if (end == std::string::npos && bytes_.size() - taken_ < kLongestLine) {
    bytes_.erase(0, taken_);
    taken_ = 0;
    bytes_ += Current().Next(kPiece);
    end = bytes_.find('\n');
  }
  const std::size_t rest = bytes_.size() - taken_;
  const std::size_t length =
      std::min({end == std::string::npos ? rest : end + 1 - taken_, rest, kLongestLine});
  line_.assign(bytes_, taken_, length);
  taken_ += length;
  at_end_ = line_.empty();
  if (pacer_) due_ = pacer_->DueOf(line_);
}

void PacedFeed::Step() {
  std::string due;
  const auto now = Clock::now();
  while (!IsAtEnd() && due_ <= now && due.size() < kPiece) {
    due += line_;
    ReadLine();
  }
  if (!due.empty()) Play(due);
}

}  // namespace host
