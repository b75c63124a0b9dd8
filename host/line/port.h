#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "gpsengine/platform/serial.h"
#include "host/network/address.h"

namespace host {

/// What the user has named as a port, a device or an address, for opening it, over and over if need be.
class Port {
 public:
  /// Throws a Failure for an address that is malformed, or that this program cannot open.
  static std::unique_ptr<Port> Of(const std::string& name);
  explicit Port(std::string name, std::optional<Address> address = {})
      : name_(std::move(name)), address_(std::move(address)) {}
  virtual ~Port() = default;
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;

  /// As the user has it. A device that was opened once goes by the name under which it is found again.
  const std::string& Name() const { return name_; }
  /// None for a device.
  const std::optional<Address>& GetAddress() const { return address_; }
  bool TakesCommands() const { return !address_ || address_->TakesCommands(); }
  bool HasRate() const { return !address_ || address_->HasRate(); }
  /// It has an end that is no loss.
  bool IsInput() const { return address_ && address_->scheme == Address::Scheme::input; }

  /// An attempt to open it may take its time, and goes on in the background: true once it has come to an end,
  /// well or not. Another one begins with the next call, unless there is a line to take. Until then
  /// Descriptor becomes readable when there is a reason to ask again.
  virtual bool Prepare() { return true; }
  virtual int Descriptor() const { return -1; }
  /// The line, of the attempt if there was one; null if there is none, with the reason in WhyNot.
  virtual std::unique_ptr<SerialLine> Open() = 0;
  /// Why the port does not open, as text for the user; empty if it does.
  virtual std::string WhyNot() const = 0;
  /// It is not there, and may come.
  virtual bool IsMissing() const = 0;

 protected:
  std::string name_;

 private:
  const std::optional<Address> address_;
};

}  // namespace host
