// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/XmlFile.h"
#include "base/XmlFileCache.h"
#include "diag/viator3.h"
#include "model/Folders.h"

namespace korval::model {

/// What a section of a description file and the ECU file behind it say.
struct FileContent {
  base::XmlDocument description;  ///< the short names point into it
  std::string korv_file_name;     ///< full path of the ECU file
  std::string korv_function;
  std::unordered_map<std::string_view, std::string_view> short_names;  ///< to the names of data items

  friend bool operator==(const FileContent&, const FileContent&) = default;
};

/// The contents of the files that one session selects. Files that have not changed are read once, and
/// selected again they share their content; one that has changed is seen at the next selection.
class FileContents {
 public:
  using EcuFile = std::shared_ptr<const viator3::EcuFile>;
  /// Reads an ECU file, given its full path.
  using ReadEcuFile = std::function<EcuFile(const std::string&)>;
  struct Loaded {
    std::shared_ptr<const FileContent> content;
    EcuFile ecu_file;
  };

  /// Raises Failure with a text for the client.
  Loaded Load(const Folders& folders, const std::string& description_file, const std::string& section,
              const ReadEcuFile& read_ecu_file);

 private:
  struct Known {
    std::shared_ptr<const FileContent> content;
    std::weak_ptr<const viator3::EcuFile> ecu_file;  // the session holds the one that it uses
  };

  base::XmlFileCache documents_;
  std::map<std::pair<std::string, std::string>, Known> known_;  // by description file and section
};

/// The section of that name; empty when there is none. Names are compared as text, so no name can change what
/// is selected.
pugi::xml_node SectionOf(const pugi::xml_document& description, std::string_view name);

}  // namespace korval::model
