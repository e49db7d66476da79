// SPDX-License-Identifier: MIT
// What tests write down as XML, as a session takes it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "base/FileStamp.h"
#include "base/XmlFile.h"
#include "diag/viator3.h"
#include "ecu/ecufile/XmlEcuFile.h"

namespace korval::tests {

/// An ECU file that may be in memory alone.
inline std::shared_ptr<const viator3::EcuFile> EcuFileOf(const std::string& path,
                                                         base::XmlDocument document) {
  return std::make_shared<const ecu::XmlEcuFile>(path, base::FileStamp::Of(path), std::move(document));
}

/// The frames of a "can" document: under each "x" pairs of an "i" (identifier in signed decimal) and an "s"
/// with a "d" (data in hexadecimal).
inline std::vector<viator3::CanFrame> FramesIn(const pugi::xml_document& document) {
  std::vector<viator3::CanFrame> frames;
  for (const pugi::xml_node& group : document.document_element().children("x")) {
    for (const pugi::xml_node& identifier : group.children("i")) {
      frames.push_back({identifier.text().as_int(), identifier.next_sibling("s").child("d").child_value()});
    }
  }
  return frames;
}

}  // namespace korval::tests
