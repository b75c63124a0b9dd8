#include "host/records/lastposition.h"

#include "host/records/fixkind.h"

namespace host {

namespace {

constexpr std::chrono::seconds kSilence{2};

}  // namespace

void LastPosition::Note(const Record& record) {
  if (!record.HasPosition()) return;
  const auto now = now_();
  has_news_ = has_news_ || !position_at_ || now - *position_at_ > kSilence || signal_ != record.epoch.signal;
  signal_ = record.epoch.signal;
  position_at_ = now;
  if (record.epoch.valid) fix_at_ = position_at_;
}

std::string_view LastPosition::Kind() const {
  return position_at_ ? NameOfSignal(signal_) : std::string_view();
}

void LastPosition::Write(JsonWriter& json) const {
  json.Known("fix", Kind());
  WriteAge(json, "fixAge", fix_at_);
  WriteAge(json, "positionAge", position_at_);
}

void LastPosition::WriteAge(JsonWriter& json, std::string_view key,
                            const std::optional<Clock::time_point>& since) const {
  if (since) json.MemberFixed(key, std::chrono::duration<double>(now_() - *since).count(), 1);
}

}  // namespace host
