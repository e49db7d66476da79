// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "base/XmlFile.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/description/MessagingFile.h"

namespace korval::apps {

/// Checks a description file against the files that its sections lead to.
class DescriptionCheck {
 public:
  /// `korv_folder` is where the urls lead.
  DescriptionCheck(CheckedFile& file, std::string korv_folder)
      : file_(file), korv_folder_(std::move(korv_folder)) {}
  /// `root` is the element xml.
  void Run(const pugi::xml_node& root);

 private:
  struct EcuFile {
    std::filesystem::path path;
    base::XmlDocument document;
    ecu::FunctionDescription function;
  };

  bool CheckName(const pugi::xml_node& section);
  void CheckSection(const pugi::xml_node& section);
  std::optional<EcuFile> LoadEcuFile(const pugi::xml_node& section);
  ecu::MessagingFile LoadMessaging(const pugi::xml_node& section);
  void CheckFunction(const pugi::xml_node& section, const EcuFile& ecu_file);
  void CheckData(const pugi::xml_node& section, const EcuFile& ecu_file);

  CheckedFile& file_;
  std::string korv_folder_;
  ecu::MessagingFile messaging_;
  std::set<std::string> sections_;
  std::map<std::string, std::filesystem::path> ecu_files_;  // by function
};

}  // namespace korval::apps
