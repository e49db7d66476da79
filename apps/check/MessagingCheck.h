// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <set>
#include <string>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "ecu/can/CanFrame.h"

namespace korval::apps {

/// Checks a CAN messaging file in XML.
class MessagingCheck {
 public:
  explicit MessagingCheck(CheckedFile& file) : file_(file) {}
  /// `root` is the element xml.
  void Run(const pugi::xml_node& root);

 private:
  void CheckDiagnostic(const pugi::xml_node& diagnostic);
  void CheckFrame(const pugi::xml_node& frame);
  void TakeIdentifier(const pugi::xml_node& element, ecu::CanIdentifier identifier);

  CheckedFile& file_;
  std::set<std::string> functions_;
  std::set<std::string> frames_;
  std::map<ecu::CanIdentifier, std::string> users_;  // who uses an identifier
};

/// Checks a CAN messaging file in the DBC format: what its reader leaves out.
void CheckDbc(CheckedFile& file);

}  // namespace korval::apps
