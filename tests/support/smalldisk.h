#pragma once

#include <sys/resource.h>

#include <csignal>

/// A disk with room for that many bytes a file.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t nBytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_Before);
    const rlimit limit{nBytes, m_Before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &m_Before); }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

 private:
  rlimit m_Before{};
};
