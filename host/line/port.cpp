#include "host/line/port.h"

#include <unistd.h>

#include <cerrno>

#include "gpsengine/platform/file.h"
#include "host/line/ports.h"
#include "host/network/dial.h"
#include "host/network/rfc2217line.h"
#include "host/run/failure.h"

namespace host {

namespace {

class DevicePort : public Port {
 public:
  using Port::Port;

  std::unique_ptr<SerialLine> Open() override {
    auto line = OpenSerialDevice(CString::FromUtf8(name_));
    if (line != nullptr) name_ = StableName(name_);
    return line;
  }
  std::string WhyNot() const override { return WhyNotOpen(name_); }
  bool IsMissing() const override { return access(name_.c_str(), F_OK) != 0; }
};

class NetworkPort : public Port {
 public:
  using Port::Port;

  bool Prepare() override;
  int Descriptor() const override { return dial_ ? dial_->Descriptor() : -1; }
  std::unique_ptr<SerialLine> Open() override {
    if (line_ == nullptr) SetLastError(ENODEV);
    return std::move(line_);
  }
  std::string WhyNot() const override { return reason_; }
  bool IsMissing() const override { return line_ == nullptr; }

 private:
  std::optional<Dial> dial_;
  std::unique_ptr<SerialLine> line_;
  std::string reason_;
};

bool NetworkPort::Prepare() {
  if (line_ != nullptr) return true;
  if (!dial_) dial_.emplace(*GetAddress());
  if (!dial_->IsOver()) return false;
  reason_.clear();
  try {
    line_ = dial_->Take();
  } catch (const Failure& failure) {
    reason_ = failure.what();
  }
  dial_.reset();
  return true;
}

}  // namespace

std::unique_ptr<Port> Port::Of(const std::string& name) {
  if (!IsAddress(name)) return std::make_unique<DevicePort>(name);
  Address address = ReadAddress(name);
  if (address.scheme == Address::Scheme::rfc2217) CheckRfc2217();
  return std::make_unique<NetworkPort>(name, std::move(address));
}

}  // namespace host
