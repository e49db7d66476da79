// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "base/FileStamp.h"
#include "base/XmlFile.h"
#include "ecu/description/EcuDescription.h"

namespace korval::ecu {

/// The ECU files of a session by their function. The file offered last serves its function; a function that
/// no offered file has is looked for in a folder, whose files are read once, and again when they have
/// changed.
class EcuFiles {
 public:
  /// `folder` may be "".
  explicit EcuFiles(std::string folder) : folder_(std::move(folder)) {}

  /// Raises Failure when the file names no function. A file offered again without having changed on disk
  /// keeps the description that is in use.
  void Offer(const std::string& path, base::XmlDocument document);
  /// Null when no file has the function.
  std::shared_ptr<const EcuDescription> Find(const std::string& function);

 private:
  struct File {
    std::string path;
    base::FileStamp stamp;
    base::XmlDocument document;
    std::shared_ptr<const EcuDescription> description;
  };
  // A file of the folder.
  struct Searched {
    base::FileStamp stamp;
    std::string function;  // "" when it cannot be used
  };

  void SearchFolder(const std::string& function);

  std::string folder_;
  std::map<std::string, File> files_;  // by function
  std::map<std::filesystem::path, Searched> searched_;
};

}  // namespace korval::ecu
