// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "apps/check/ItemCheck.h"
#include "ecu/description/ItemDescription.h"

namespace korval::apps {

/// What the parts of an ECU file know of each other.
struct EcuFileNames {
  /// Frames of a CAN messaging file, which is not known here, may have items with a signal.
  bool has_frames = false;
  std::set<std::string> requests;
  /// Every data item by its name; without a description where all of that name are left out.
  std::map<std::string, std::vector<ecu::ItemDescription>> items;
};

/// Checks an ECU file (docs/ecu-file.md).
class EcuFileCheck {
 public:
  explicit EcuFileCheck(CheckedFile& file) : file_(file) {}
  /// `root` is the element xml.
  void Run(const pugi::xml_node& root);

 private:
  void CheckReferenceData(const pugi::xml_node& target);
  void CheckRequest(const pugi::xml_node& request);
  void CheckSent(const pugi::xml_node& request);
  void CheckReceived(const pugi::xml_node& request);
  void CheckSingle(const pugi::xml_node& request, const char* child);
  std::vector<PlacedItem> TakeItems(const pugi::xml_node& holder);

  CheckedFile& file_;
  bool frames_only_ = false;  // the function CAN has nothing to send
  EcuFileNames names_;
};

}  // namespace korval::apps
