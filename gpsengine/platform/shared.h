#pragma once

#include <atomic>
#include <concepts>

#pragma GCC visibility push(default)

/// A value shared between threads that reads, assigns and counts like a plain one. Writes made before an
/// assignment are visible to the thread that reads the assigned value.
template <class T>
class CShared {
 public:
  /// With this value.
  ///@{
  CShared(T value = T{}) noexcept : m_Value(value) {}
  CShared(const CShared& other) noexcept : m_Value(other.Get()) {}
  ///@}
  /// From any thread.
  ///@{
  CShared& operator=(const CShared& other) noexcept { return *this = other.Get(); }
  CShared& operator=(T value) noexcept {
    m_Value.store(value, std::memory_order_release);
    return *this;
  }
  operator T() const noexcept { return Get(); }
  T Get() const noexcept { return m_Value.load(std::memory_order_acquire); }
  ///@}
  /// Changes the value atomically and returns the new one.
  ///@{
  T operator++() noexcept requires(!std::same_as<T, bool>) { return *this += T{1}; }
  T operator+=(T value) noexcept requires(!std::same_as<T, bool>) {
    return Change([value](T old) { return static_cast<T>(old + value); });
  }
  T operator-=(T value) noexcept requires(!std::same_as<T, bool>) {
    return Change([value](T old) { return static_cast<T>(old - value); });
  }
  T operator|=(T value) noexcept requires std::integral<T> {
    return Change([value](T old) { return static_cast<T>(old | value); });
  }
  T operator&=(T value) noexcept requires std::integral<T> {
    return Change([value](T old) { return static_cast<T>(old & value); });
  }
  ///@}
  /// Adds one when only a single thread ever counts: far cheaper than ++.
  void Count() noexcept requires(!std::same_as<T, bool>) {
    m_Value.store(m_Value.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }

 private:
  template <class Operation>
  T Change(Operation operation) noexcept {
    T old = Get();
    while (!m_Value.compare_exchange_weak(old, operation(old), std::memory_order_acq_rel)) {
    }
    return operation(old);
  }

  std::atomic<T> m_Value;
};

#pragma GCC visibility pop
