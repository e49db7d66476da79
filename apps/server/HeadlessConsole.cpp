// SPDX-License-Identifier: MIT
#include "HeadlessConsole.h"

#include <algorithm>

#include <unistd.h>

#include "base/VisibleText.h"
#include "platform/process/StandardStreams.h"

namespace korval::apps {
namespace {

base::BackgroundWriter::Settings WriterTo(int descriptor) {
  base::BackgroundWriter::Settings settings;
  settings.write = [descriptor](std::string_view text) { return platform::WriteAll(descriptor, text); };
  settings.dropped = [](std::size_t lines) {
    return "(" + std::to_string(lines) + (lines == 1 ? " line" : " lines") +
           " dropped: nobody has read them in time)\n";
  };
  return settings;
}

base::BackgroundWriter::Settings OutputWriter(std::function<void(std::error_code)> on_output_lost) {
  base::BackgroundWriter::Settings settings = WriterTo(STDOUT_FILENO);
  settings.on_failure = std::move(on_output_lost);
  return settings;
}

}  // namespace

HeadlessConsole::HeadlessConsole(std::function<void(std::error_code)> on_output_lost)
    : output_(OutputWriter(std::move(on_output_lost))),
      errors_(WriterTo(STDERR_FILENO)),
      repeated_(loop_, [this](std::string_view text) { Write(text); }) {}

void HeadlessConsole::Trace(std::string_view text) { repeated_.Append(text); }

void HeadlessConsole::Error(const std::string& sentence) {
  errors_.Append(base::VisibleText(sentence) + "\n");
}

void HeadlessConsole::FinishTrace() {
  repeated_.Finish();
  output_.Finish();
}

void HeadlessConsole::Write(std::string_view text) {
  std::string output(text);
  output.erase(std::remove(output.begin(), output.end(), '\r'), output.end());
  output_.Append(output);
}

}  // namespace korval::apps
