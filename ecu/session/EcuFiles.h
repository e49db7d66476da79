// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "base/FileStamp.h"
#include "ecu/description/EcuDescription.h"
#include "ecu/ecufile/XmlEcuFileCache.h"

namespace korval::ecu {

/// The ECU files of a session by their function. The file offered last serves its function; a function that
/// no offered file has is looked for in a folder, whose files are read once, and again when they have
/// changed.
class EcuFiles {
 public:
  /// `folder` may be "".
  explicit EcuFiles(std::string folder) : folder_(std::move(folder)) {}

  /// A file that has not changed is the same object again, as long as somebody holds it. Raises Failure when
  /// it cannot be read.
  std::shared_ptr<const XmlEcuFile> Read(const std::string& path) { return cache_.Read(path); }
  /// Raises Failure when the file names no function. A file offered again without having changed on disk
  /// keeps the description that is in use.
  void Offer(const std::shared_ptr<const XmlEcuFile>& file);
  /// Null when no file has the function.
  std::shared_ptr<const EcuDescription> Find(const std::string& function);

 private:
  struct File {
    std::shared_ptr<const XmlEcuFile> source;
    std::shared_ptr<const EcuDescription> description;
  };
  // A file of the folder.
  struct Searched {
    base::FileStamp stamp;
    std::string function;  // "" when it cannot be used
  };

  void SearchFolder(const std::string& function);

  std::string folder_;
  XmlEcuFileCache cache_;
  std::map<std::string, File> files_;  // by function
  std::map<std::filesystem::path, Searched> searched_;
};

}  // namespace korval::ecu
