#pragma once

#include <memory>

#pragma GCC visibility push(default)

constexpr int THREAD_PRIORITY_NORMAL = 0;        ///< The default.
constexpr int THREAD_PRIORITY_ABOVE_NORMAL = 1;  ///< Higher, if permitted.

/// A thread function. Its result is ignored.
using AFX_THREADPROC = unsigned (*)(void* pParam);

/// A running thread. Destroying the object detaches the thread.
class CWinThread {
 public:
  virtual ~CWinThread() = default;
  /// Blocks until the thread has ended.
  virtual void Join() = 0;
  /// Whether the caller is this thread.
  virtual bool IsCurrent() const = 0;
};

/// Starts a thread; null on failure. A priority that is not permitted is ignored.
std::unique_ptr<CWinThread> AfxBeginThread(AFX_THREADPROC pfn, void* pParam,
                                           int nPriority = THREAD_PRIORITY_NORMAL);

#pragma GCC visibility pop
