// SPDX-License-Identifier: MIT
#include "tests/system/ServerProcess.h"

#include <array>
#include <chrono>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korval::tests {
namespace {

constexpr std::chrono::seconds kDeadline{60};
constexpr std::string_view kPortLine = "          > LocalPort=";

struct Pipe {
  int read_end = -1;
  int write_end = -1;
};

Pipe OpenPipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {ends[0], ends[1]};
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> EnvironmentWithHome(const std::string& home) {
  std::vector<std::string> environment{"HOME=" + home, "XDG_CONFIG_HOME=" + home};
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    if (!text.starts_with("HOME=") && !text.starts_with("XDG_CONFIG_HOME=")) environment.emplace_back(text);
  }
  return environment;
}

int StatusOf(int wait_status) {
  return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 128 + WTERMSIG(wait_status);
}

}  // namespace

ServerProcess::ServerProcess(const std::vector<std::string>& arguments, const std::string& home,
                             const std::string& program) {
  const Pipe output = OpenPipe();
  const Pipe errors = OpenPipe();
  std::vector<std::string> command{program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = EnvironmentWithHome(home);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, output.write_end, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors.write_end, STDERR_FILENO);
  const int failure = posix_spawn(&process_, program.c_str(), &actions, nullptr, Pointers(command).data(),
                                  Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  close(output.write_end);
  close(errors.write_end);
  if (failure != 0) {
    close(output.read_end);
    close(errors.read_end);
    throw std::runtime_error("cannot start " + program);
  }
  reader_ = std::thread([this, output, errors] { Drain(output.read_end, errors.read_end); });
}

ServerProcess::~ServerProcess() {
  if (!ended_) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  ResumeReading();
  reader_.join();
}

void ServerProcess::Drain(int output, int errors) {
  std::array<pollfd, 2> sources{pollfd{output, POLLIN, 0}, pollfd{errors, POLLIN, 0}};
  while (sources[0].fd >= 0 || sources[1].fd >= 0) {
    if (poll(sources.data(), sources.size(), -1) < 0) continue;
    for (pollfd& source : sources) {
      if (source.fd < 0 || source.revents == 0) continue;
      WaitUntilReading();
      std::array<char, 65536> buffer{};
      const ssize_t count = read(source.fd, buffer.data(), buffer.size());
      if (count <= 0) {
        close(std::exchange(source.fd, -1));
        continue;
      }
      const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
      const std::lock_guard lock(mutex_);
      if (&source == sources.data())
        TakeOutput(bytes);
      else
        errors_ += bytes;
      changed_.notify_all();
    }
  }
  const std::lock_guard lock(mutex_);
  if (!open_line_.empty()) lines_.push_back(std::exchange(open_line_, {}));
  drained_ = true;
  changed_.notify_all();
}

void ServerProcess::WaitUntilReading() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return reading_; });
}

void ServerProcess::PauseReading() {
  const std::lock_guard lock(mutex_);
  reading_ = false;
}

void ServerProcess::ResumeReading() {
  const std::lock_guard lock(mutex_);
  reading_ = true;
  changed_.notify_all();
}

void ServerProcess::TakeOutput(std::string_view bytes) {
  for (std::size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
    open_line_ += bytes.substr(0, end);
    lines_.push_back(std::exchange(open_line_, {}));
    bytes.remove_prefix(end + 1);
  }
  open_line_ += bytes;
}

ServerProcess::Lines ServerProcess::TraceUntil(std::string_view beginning) {
  Lines taken;
  const auto end = std::chrono::steady_clock::now() + kDeadline;
  std::unique_lock lock(mutex_);
  while (taken.empty() || !taken.back().starts_with(beginning)) {
    if (!changed_.wait_until(lock, end, [this] { return !lines_.empty() || drained_; }) || lines_.empty()) {
      std::string seen;
      for (const std::string& line : taken) seen += "\n  " + line;
      throw std::runtime_error("no trace line \"" + std::string(beginning) + "\"; there were:" + seen +
                               "\nand on standard error:\n" + errors_);
    }
    taken.push_back(std::move(lines_.front()));
    lines_.pop_front();
  }
  return taken;
}

int ServerProcess::WaitForPort() { return std::stoi(WaitFor(kPortLine).substr(kPortLine.size())); }

void ServerProcess::Signal(int signal) const { kill(process_, signal); }

int ServerProcess::Stop(int signal) {
  Signal(signal);
  return WaitForExit();
}

int ServerProcess::WaitForExit() {
  {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, kDeadline, [this] { return drained_; }))
      throw std::runtime_error("the server does not end; on standard error:\n" + errors_);
  }
  int status = 0;
  waitpid(process_, &status, 0);
  ended_ = true;
  return StatusOf(status);
}

void ServerProcess::WaitUntilItHasEnded() const {
  pollfd end{static_cast<int>(syscall(SYS_pidfd_open, process_, 0)), POLLIN, 0};
  const int ready = poll(&end, 1, static_cast<int>(std::chrono::milliseconds(kDeadline).count()));
  close(end.fd);
  if (ready != 1) throw std::runtime_error("the server does not end");
}

std::string ServerProcess::StandardError() {
  const std::lock_guard lock(mutex_);
  return errors_;
}

ServerProcess::Lines ServerProcess::RemainingTrace() {
  const std::lock_guard lock(mutex_);
  Lines rest(lines_.begin(), lines_.end());
  lines_.clear();
  return rest;
}

void ServerProcess::Pause() const {
  kill(process_, SIGSTOP);
  waitpid(process_, nullptr, WUNTRACED);
}

void ServerProcess::Resume() const { kill(process_, SIGCONT); }

int ServerProcess::Scheduling() const { return sched_getscheduler(process_) & ~SCHED_RESET_ON_FORK; }

long ServerProcess::ResidentKilobytes() const {
  std::ifstream status("/proc/" + std::to_string(process_) + "/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
  throw std::runtime_error("no resident memory in the process status");
}

std::set<std::string> ServerProcess::MappedFiles() const {
  std::set<std::string> names;
  std::ifstream maps("/proc/" + std::to_string(process_) + "/maps");
  for (std::string line; std::getline(maps, line);) {
    const std::size_t folder = line.rfind('/');
    if (folder != std::string::npos) names.insert(line.substr(folder + 1));
  }
  return names;
}

}  // namespace korval::tests
