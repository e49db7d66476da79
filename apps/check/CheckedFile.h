// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "apps/check/SourceText.h"
#include "base/XmlFile.h"

namespace korval::apps {

struct Finding {
  std::size_t line = 1;
  std::string sentence;
  bool is_note = false;  ///< nothing is wrong, but somebody should know

  friend bool operator==(const Finding&, const Finding&) = default;
};

/// A file that is being checked, and what has been found in it.
class CheckedFile {
 public:
  /// Reads the file. Raises Failure when it cannot be read.
  explicit CheckedFile(const std::filesystem::path& path);
  /// A file with this content.
  CheckedFile(std::filesystem::path path, std::string bytes);

  const std::filesystem::path& Path() const { return path_; }
  const std::string& Bytes() const { return bytes_; }
  /// The parsed file; null, with a finding that says where, when it is no XML.
  base::XmlDocument Parse();

  /// `sentence` says what is wrong with the element, whose name is put in front, and what to do.
  void Report(const pugi::xml_node& element, const std::string& sentence);
  /// The same for what is worth knowing, but no mistake.
  void Note(const pugi::xml_node& element, const std::string& sentence);
  void ReportLine(std::size_t line, std::string sentence);
  /// In the order of the lines.
  std::vector<Finding> Findings() const;

 private:
  void ReportParseFailure(const std::string& reason);
  void ReportEncoding();

  std::filesystem::path path_;
  std::string bytes_;
  SourceText text_;
  std::vector<Finding> findings_;
};

}  // namespace korval::apps
