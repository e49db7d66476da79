// SPDX-License-Identifier: MIT
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "apps/check/CheckOptions.h"
#include "apps/check/CheckedFile.h"
#include "apps/check/FileCheck.h"
#include "base/Failure.h"

namespace {

using korval::apps::CheckedFile;
using korval::apps::CheckOptions;

constexpr int kClean = 0;
constexpr int kFindings = 1;
constexpr int kUnusable = 2;

int Check(const std::string& path, const CheckOptions& options) {
  try {
    CheckedFile file(path);
    korval::apps::CheckFile(file, options.korv_folder);
    const auto findings = file.Findings();
    int status = kClean;
    for (const auto& finding : findings) {
      std::cout << path << ":" << finding.line << ": " << (finding.is_note ? "note: " : "")
                << finding.sentence << "\n";
      if (!finding.is_note) status = kFindings;
    }
    return status;
  } catch (const korval::base::Failure& failure) {
    std::cerr << "korval-check: " << failure.Description() << "\n";
    return kUnusable;
  }
}

int Run(const CheckOptions& options) {
  if (options.help || options.version) {
    std::cout << (options.help ? korval::apps::CheckHelp() : "korval-check " KORVAL_VERSION "\n");
    return kClean;
  }
  int status = kClean;
  for (const std::string& path : options.files) status = std::max(status, Check(path, options));
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(korval::apps::ReadCheckOptions(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const korval::apps::UsageError& error) {
    std::cerr << "korval-check: " << error.what() << " (see --help)\n";
  } catch (const std::exception& failure) {
    std::cerr << "korval-check: " << failure.what() << "\n";
  }
  return kUnusable;
}
