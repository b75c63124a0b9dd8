#pragma once

#include <vector>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// A growable array of 16-bit words.
class CWordArray {
 public:
  /// The number of words, and whether it is 0.
  ///@{
  int GetSize() const { return static_cast<int>(m_Words.size()); }
  bool IsEmpty() const { return m_Words.empty(); }
  ///@}
  /// Truncates the array or appends zeroes; a negative size counts as 0.
  void SetSize(int nSize) { m_Words.resize(nSize > 0 ? static_cast<std::size_t>(nSize) : 0); }
  /// Empties the array.
  void RemoveAll() { m_Words.clear(); }
  /// One word. An index out of range throws std::out_of_range.
  ///@{
  WORD GetAt(int nIndex) const { return m_Words.at(static_cast<std::size_t>(nIndex)); }
  WORD operator[](int nIndex) const { return GetAt(nIndex); }
  ///@}
  /// The words, contiguous; valid until the size changes.
  ///@{
  WORD* GetData() { return m_Words.data(); }
  const WORD* GetData() const { return m_Words.data(); }
  ///@}

 private:
  std::vector<WORD> m_Words;
};

#pragma GCC visibility pop
