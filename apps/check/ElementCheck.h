// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "base/ByteBuffer.h"
#include "ecu/can/CanFrame.h"
#include "ecu/ecufile/Attribute.h"

namespace korval::apps {

/// Checks the attributes of one element by the loader's own readers. What is absent is right unless required;
/// each check reports what it finds and tells whether the attribute can be used or is absent.
class ElementCheck {
 public:
  ElementCheck(CheckedFile& file, const pugi::xml_node& element) : file_(file), element_(element) {}

  /// There, and not empty. `why` says what becomes of an element without it.
  bool Required(const ecu::Attribute& rule, const std::string& why);
  bool Value(const ecu::Attribute& rule);
  /// None when absent or wrong.
  std::optional<ecu::CanIdentifier> Identifier(const ecu::Attribute& rule);
  std::optional<base::ByteBuffer> Bytes(const ecu::Attribute& rule);

 private:
  // The attribute is there.
  bool Integer(const ecu::Attribute& rule);
  bool Hex(const ecu::Attribute& rule);
  bool OneOf(const ecu::Attribute& rule);
  bool Refuse(const ecu::Attribute& rule, const std::string& what);

  CheckedFile& file_;
  pugi::xml_node element_;
};

}  // namespace korval::apps
