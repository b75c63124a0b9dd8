#pragma once

#include <vector>

#include "gpsengine/platform/types.h"

#pragma GCC visibility push(default)

/// A growable array of 16-bit words.
class CWordArray {
 public:
  int GetSize() const { return static_cast<int>(m_Words.size()); }
  bool IsEmpty() const { return m_Words.empty(); }
  void SetSize(int nSize) { m_Words.resize(nSize > 0 ? static_cast<std::size_t>(nSize) : 0); }
  void RemoveAll() { m_Words.clear(); }
  WORD GetAt(int nIndex) const { return m_Words.at(static_cast<std::size_t>(nIndex)); }
  WORD operator[](int nIndex) const { return GetAt(nIndex); }
  WORD* GetData() { return m_Words.data(); }
  const WORD* GetData() const { return m_Words.data(); }

 private:
  std::vector<WORD> m_Words;
};

#pragma GCC visibility pop
