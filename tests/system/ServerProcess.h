// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace korval::tests {

/// The server, or another of the programs, as a process of its own. A thread drains its output, so that no
/// amount of trace blocks it; the test takes the trace line by line. What takes longer than the deadline
/// raises std::runtime_error, which fails the test. The destructor kills what still runs.
class ServerProcess {
 public:
  /// Starts the program with `arguments` and an environment whose settings folder is `home`.
  ServerProcess(const std::vector<std::string>& arguments, const std::string& home,
                const std::string& program = KORVAL_ASAP_SERVER);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  using Lines = std::vector<std::string>;
  /// Takes the trace up to the first line that begins with `beginning`, waiting for it; that line is the
  /// last.
  Lines TraceUntil(std::string_view beginning);
  /// As TraceUntil, but only that line.
  std::string WaitFor(std::string_view beginning) { return TraceUntil(beginning).back(); }
  /// Waits until the server listens, and returns the port.
  int WaitForPort();

  void Signal(int signal) const;
  /// Sends `signal` and returns the exit status, or 128 and more when a signal ended the process.
  int Stop(int signal);
  /// Waits for the end of the process by itself, and returns the exit status likewise.
  int WaitForExit();
  /// Waits for the end of the process even while nobody reads what it writes, and leaves its status there.
  void WaitUntilItHasEnded() const;
  /// What the process wrote to standard error so far.
  std::string StandardError();
  /// What is left of the trace after the end of the process.
  Lines RemainingTrace();

  /// Holds the process still, so that bytes sent meanwhile arrive at once when it goes on.
  void Pause() const;
  void Resume() const;
  /// From now on nobody reads what the process writes, as with a paused pager; and again somebody does.
  void PauseReading();
  void ResumeReading();
  /// The scheduling policy of its main thread.
  int Scheduling() const;
  /// Resident memory in KiB.
  long ResidentKilobytes() const;
  /// The names, without folders, of the files that are mapped into its memory: the program and its libraries.
  std::set<std::string> MappedFiles() const;

 private:
  void Drain(int output, int errors);
  void WaitUntilReading();
  void TakeOutput(std::string_view bytes);

  pid_t process_ = -1;
  bool ended_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> lines_;
  std::string open_line_;
  std::string errors_;
  bool reading_ = true;
  bool drained_ = false;
  std::thread reader_;
};

}  // namespace korval::tests
