// SPDX-License-Identifier: MIT
#include "apps/check/CheckOptions.h"

#include "apps/commandline/CommandLine.h"

namespace korval::apps {
namespace {

CommandLine Declare(CheckOptions& options) {
  CommandLine line({
      .usage = "korval-check [OPTIONS] FILE...",
      .description =
          "Checks description files, ECU files and CAN messaging files (XML or DBC) and says what is wrong,\n"
          "a line each: FILE:LINE: sentence.",
      .ending =
          "Exit status: 0 nothing is wrong, 1 something is, 2 wrong usage or a file that cannot be read.",
  });
  line.Value("--korv-folder", "DIR",
             "Where the urls of description files lead (default: the file's own folder).",
             [&options](const std::string& folder) { options.korv_folder = folder; });
  line.Words(options.files);
  return line;
}

}  // namespace

CheckOptions ReadCheckOptions(const std::vector<std::string>& arguments) {
  CheckOptions options;
  const CommandLine::Wanted wanted = Declare(options).Read(arguments);
  options.help = wanted == CommandLine::Wanted::kHelp;
  options.version = wanted == CommandLine::Wanted::kVersion;
  if (options.files.empty() && wanted == CommandLine::Wanted::kRun) throw UsageError("no file is given");
  return options;
}

std::string CheckHelp() {
  CheckOptions unused;
  return Declare(unused).Help();
}

}  // namespace korval::apps
