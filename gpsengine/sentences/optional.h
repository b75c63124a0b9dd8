#pragma once

#include <compare>
#include <optional>
#include <ostream>
#include <type_traits>

#include "gpsengine/sentences/moment.h"

#pragma GCC visibility push(default)

namespace gps {

/// A value, or none. It is used and compared like a std::optional, becomes one where one is asked for, and
/// streams take it: a value as it is, a moment as "2024-05-14T08:00:01.000Z", and "-" for none.
template <class T>
class Optional {
 public:
  /// None, or that value.
  ///@{
  constexpr Optional() = default;
  constexpr Optional(std::nullopt_t) {}
  constexpr Optional(const T& value) : value_(value) {}
  constexpr Optional(const std::optional<T>& value) : value_(value) {}
  ///@}

  /// As std::optional has them.
  ///@{
  constexpr bool has_value() const { return value_.has_value(); }
  constexpr explicit operator bool() const { return value_.has_value(); }
  constexpr operator const std::optional<T>&() const { return value_; }
  constexpr const T& operator*() const { return *value_; }
  constexpr T& operator*() { return *value_; }
  constexpr const T* operator->() const { return &*value_; }
  constexpr const T& value() const { return value_.value(); }
  constexpr T value_or(const T& other) const { return value_.value_or(other); }
  constexpr void reset() { value_.reset(); }
  ///@}
  /// None is less than any value.
  ///@{
  friend constexpr bool operator==(const Optional& one, const Optional& other) = default;
  friend constexpr auto operator<=>(const Optional& one, const Optional& other) = default;
  ///@}

  /// Writes it.
  friend std::ostream& operator<<(std::ostream& out, const Optional& optional) {
    if (!optional) return out << '-';
    if constexpr (std::is_same_v<T, Time>) {
      return out << IsoText(*optional);
    } else {
      return out << *optional;
    }
  }

 private:
  std::optional<T> value_;
};

}  // namespace gps

#pragma GCC visibility pop
