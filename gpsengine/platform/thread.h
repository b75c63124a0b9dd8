#pragma once

#include <memory>

#pragma GCC visibility push(default)

constexpr int THREAD_PRIORITY_NORMAL = 0;        ///< As the system gives.
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;  ///< Ahead of those, where the process may.

/// What a thread runs. Its result is not looked at.
using AFX_THREADPROC = unsigned (*)(void* pParam);

/// A running thread. Destroying the object lets the thread run on by itself.
class CWinThread {
 public:
  virtual ~CWinThread() = default;
  /// Blocks until the thread has ended.
  virtual void Join() = 0;
  /// Whether the caller is this thread.
  virtual bool IsCurrent() const = 0;
};

/// Starts a thread; null if the platform has no more. A priority that the process may not take is passed
/// over.
std::unique_ptr<CWinThread> AfxBeginThread(AFX_THREADPROC pfn, void* pParam,
                                           int nPriority = THREAD_PRIORITY_NORMAL);

#pragma GCC visibility pop
