#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include <stdexcept>

#include "host/run/descriptor.h"
#include "tests/support/basics.h"

/// The program as a user runs it, a process of its own, whose profile is not the user's.
class Program {
 public:
  /// With the name of a terminal, that is its input and output. With another command, it is that of others.
  explicit Program(std::vector<std::string> arguments, const std::string& strTerminal = "",
                   const std::string& strCommand = GPSENGINE_PROGRAM) {
    int out[2], err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    arguments.insert(arguments.begin(), strCommand);
    std::vector<char*> argv;
    for (auto& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    m_nProcess = fork();
    if (m_nProcess == 0) {
      dup2(out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      if (!strTerminal.empty()) UseTerminal(strTerminal);
      setenv("XDG_CONFIG_HOME", ("/tmp/gpsengine-test-" + std::to_string(getppid())).c_str(), 1);
      execvp(argv[0], argv.data());
      _exit(127);
    }
    close(out[1]);
    close(err[1]);
    m_Out = host::UniqueDescriptor(out[0]);
    m_Err = host::UniqueDescriptor(err[0]);
  }
  ~Program() {
    if (m_nProcess > 0) {
      kill(m_nProcess, SIGKILL);
      waitpid(m_nProcess, nullptr, 0);
    }
  }

  /// The next line of its output, without the line end; empty at the end of it.
  std::string Line() const {
    std::string line;
    for (char c; read(m_Out.Get(), &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }
  /// Whether there is something to read, or its end, within that time.
  bool HasOutput(int ms) const {
    pollfd source{m_Out.Get(), POLLIN, 0};
    return poll(&source, 1, ms) > 0;
  }
  void Signal(int nSignal) const { kill(m_nProcess, nSignal); }
  void CloseOutput() { m_Out = host::UniqueDescriptor(); }
  /// Waits for its end: the exit code, or minus the signal that ended it. One that does not end is killed.
  int Wait(std::chrono::seconds limit = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (waitpid(m_nProcess, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > end) kill(m_nProcess, SIGKILL);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    m_nProcess = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  /// What it said on its outputs and was not read yet. Call it when the program has ended.
  std::string Output() const { return Rest(m_Out.Get()); }
  std::string Errors() const { return Rest(m_Err.Get()); }

 private:
  static void UseTerminal(const std::string& strName) {
    const int terminal = open(strName.c_str(), O_RDWR | O_NOCTTY);
    dup2(terminal, STDIN_FILENO);
    dup2(terminal, STDOUT_FILENO);
    close(terminal);
    setenv("TERM", "xterm", 1);
    setenv("LC_ALL", "C.UTF-8", 1);
  }
  static std::string Rest(int nDescriptor) {
    std::string text;
    char piece[4096];
    for (ssize_t count; (count = read(nDescriptor, piece, sizeof piece)) > 0;)
      text.append(piece, static_cast<std::size_t>(count));
    return text;
  }

  pid_t m_nProcess;
  host::UniqueDescriptor m_Out, m_Err;
};

struct Ended {
  int code;
  std::string output, errors;
};

/// Runs the program to its end, its arguments between spaces. What it writes has to fit the pipes, so that it
/// may end before it is read.
inline Ended RunToEnd(const std::string& arguments) {
  Program program(Split(arguments, ' '));
  const int code = program.Wait();
  return {code, program.Output(), program.Errors()};
}

/// The output of a run that ends well.
inline std::string OutputOf(const std::string& arguments) {
  const Ended ended = RunToEnd(arguments);
  EXPECT_EQ(ended.code, 0) << ended.errors;
  return ended.output;
}
