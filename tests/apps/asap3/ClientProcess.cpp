// SPDX-License-Identifier: MIT
#include "tests/apps/asap3/ClientProcess.h"

#include <csignal>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korval::tests {
namespace {

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

}  // namespace

ClientProcess::ClientProcess(const std::vector<std::string>& arguments) {
  std::vector<std::string> words{KORVAL_ASAP3};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);

  const int create = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, folder_.Path("output").c_str(), create, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, folder_.Path("errors").c_str(), create, 0600);
  const int failure = posix_spawn(&process_, KORVAL_ASAP3, &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::runtime_error("cannot start " KORVAL_ASAP3);
}

ClientProcess::~ClientProcess() {
  if (ended_) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void ClientProcess::Signal(int number) const { ::kill(process_, number); }

int ClientProcess::ExitStatus() {
  int status = 0;
  ::waitpid(process_, &status, 0);
  ended_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ClientProcess::Output() const { return ContentOf(folder_.Path("output")); }
std::string ClientProcess::Errors() const { return ContentOf(folder_.Path("errors")); }

}  // namespace korval::tests
