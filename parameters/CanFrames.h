// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace korval::parameters {

/// The CAN frames of a value text: frames separated by ";", each an identifier of eight hexadecimal digits
/// and two digits a data byte.
std::vector<std::string_view> SplitFrames(std::string_view text);

/// The document in which frames are handed to the session:
///   <can><x i="0"><i>291</i><s><d>01020304</d></s> ...</x></can>
class CanDocument {
 public:
  CanDocument();

  /// False for a frame whose length is wrong. The identifier is read up to the first character that is no
  /// hexadecimal digit, eight digits as a signed number; the data is taken over unread.
  bool Add(std::string_view frame);
  pugi::xml_document& Document() { return document_; }
  std::string Text() const;

 private:
  pugi::xml_document document_;
  pugi::xml_node frames_;
};

}  // namespace korval::parameters
