// SPDX-License-Identifier: MIT
#include "HeadlessConsole.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace korval::apps {
namespace {

bool IsSteering(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F;
}

}  // namespace

void WriteTrace(std::string_view text) {
  static const bool on_terminal = ::isatty(STDOUT_FILENO) == 1;
  std::string output(text);
  output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
  if (on_terminal) std::replace_if(output.begin(), output.end(), IsSteering, '.');
  std::fwrite(output.data(), 1, output.size(), stdout);
  std::fflush(stdout);
}

void StderrMessageBox::Show(const std::string& text, host::MessageStyle) {
  std::fprintf(stderr, "%s\n", text.c_str());
}

}  // namespace korval::apps
