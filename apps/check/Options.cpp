// SPDX-License-Identifier: MIT
#include "apps/check/Options.h"

namespace korval::apps {
namespace {

constexpr char kKorvFolder[] = "--korv-folder";

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
    if (*argument == "--help") {
      options.help = true;
    } else if (*argument == "--version") {
      options.version = true;
    } else if (*argument == kKorvFolder) {
      if (++argument == arguments.end()) throw UsageError("--korv-folder needs a folder");
      options.korv_folder = *argument;
    } else if (argument->starts_with("-")) {
      throw UsageError("unknown option '" + *argument + "'");
    } else {
      options.files.push_back(*argument);
    }
  }
  if (options.files.empty() && !options.help && !options.version) throw UsageError("no file is given");
  return options;
}

std::string HelpText() {
  return "Usage: korval-check [--korv-folder DIR] FILE...\n"
         "Checks description files, ECU files and CAN messaging files (XML or DBC) and says what is wrong,\n"
         "a line each: FILE:LINE: sentence.\n"
         "\n"
         "  --korv-folder DIR  Where the urls of description files lead (default: the file's own folder).\n"
         "  --help             Prints this help.\n"
         "  --version          Prints the version.\n"
         "\n"
         "Exit status: 0 nothing is wrong, 1 something is, 2 wrong usage or a file that cannot be read.\n";
}

}  // namespace korval::apps
