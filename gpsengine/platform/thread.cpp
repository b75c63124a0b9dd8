#include "gpsengine/platform/thread.h"

#include <system_error>
#include <thread>

#include "gpsengine/platform/system.h"

namespace {

class Thread : public CWinThread {
 public:
  explicit Thread(std::thread thread) : m_Thread(std::move(thread)) {}
  ~Thread() override {
    if (m_Thread.joinable()) m_Thread.detach();
  }
  void Join() override {
    if (m_Thread.joinable()) m_Thread.join();
  }
  bool IsCurrent() const override { return m_Thread.get_id() == std::this_thread::get_id(); }

 private:
  std::thread m_Thread;
};

}  // namespace

std::unique_ptr<CWinThread> AfxBeginThread(AFX_THREADPROC pfn, void* param, int priority) {
  try {
    return std::make_unique<Thread>(std::thread([=] {
      if (priority > THREAD_PRIORITY_NORMAL) RaisePriority(priority);
      pfn(param);
    }));
  } catch (const std::system_error&) {
    return nullptr;
  }
}
