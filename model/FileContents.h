// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "base/XmlFile.h"
#include "base/XmlFileCache.h"
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
  struct Loaded {
    std::shared_ptr<const FileContent> content;
    base::XmlDocument ecu_document;
  };

  /// Raises Failure with a text for the client.
  Loaded Load(const Folders& folders, const std::string& description_file, const std::string& section);

 private:
  struct Known {
    std::shared_ptr<const FileContent> content;
    std::weak_ptr<const pugi::xml_document> ecu_document;  // the session holds the one that it uses
  };

  base::XmlFileCache documents_;
  std::map<std::pair<std::string, std::string>, Known> known_;  // by description file and section
};

/// The section of that name; empty when there is none. Names are compared as text, so no name can change what
/// is selected.
pugi::xml_node SectionOf(const pugi::xml_document& description, std::string_view name);

}  // namespace korval::model
