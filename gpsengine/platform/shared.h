#pragma once

#include <atomic>
#include <concepts>

#pragma GCC visibility push(default)

/// A single value that one thread sets and another reads, and that reads, assigns and counts like a plain
/// one. What was written before an assignment is visible to the thread that reads the assigned value.
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
  /// Adds one and gives the new value.
  T operator++() noexcept requires(!std::same_as<T, bool>) {
    return m_Value.fetch_add(1, std::memory_order_acq_rel) + 1;
  }
  /// Adds one, where only one thread ever counts: far cheaper than ++, which lets any thread count.
  void Count() noexcept requires(!std::same_as<T, bool>) {
    m_Value.store(m_Value.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }

 private:
  std::atomic<T> m_Value;
};

#pragma GCC visibility pop
