#pragma once

#include <mutex>

#include "host/run/failure.h"
#include "tests/support/basics.h"

/// What the program says on standard error meanwhile, from any thread, a line each.
class Complaints {
 public:
  Complaints() {
    host::SetComplaintHandler([this](const std::string& text) {
      const std::lock_guard lock(mutex_);
      text_ += text + '\n';
    });
  }
  ~Complaints() { host::SetComplaintHandler({}); }

  std::string Text() const {
    const std::lock_guard lock(mutex_);
    return text_;
  }
  /// Whether something is said within some seconds.
  testing::AssertionResult Tell(const std::string& part) const {
    Soon([&] { return Has(Text(), part); });
    return Has(Text(), part);
  }

 private:
  mutable std::mutex mutex_;
  std::string text_;
};
