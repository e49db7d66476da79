// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <pugixml.hpp>

#include "apps/check/CheckedFile.h"
#include "base/ByteBuffer.h"
#include "ecu/can/CanFrame.h"

namespace korval::apps {

/// Checks the attributes of one element by the loader's own readers. What is absent is right unless required;
/// each check reports what it finds and tells whether the attribute can be used or is absent.
class ElementCheck {
 public:
  ElementCheck(CheckedFile& file, const pugi::xml_node& element) : file_(file), element_(element) {}

  /// There, and not empty. `why` says what becomes of an element without it.
  bool Required(const char* name, const std::string& why);
  bool Integer(const char* name, std::int32_t lowest, std::int32_t highest);
  bool Number(const char* name);
  bool Hex(const char* name, std::uint32_t highest);
  bool OneOf(const char* name, std::initializer_list<std::string_view> names);
  /// None when absent or wrong.
  std::optional<ecu::CanIdentifier> Identifier(const char* name);
  std::optional<base::ByteBuffer> Bytes(const char* name);

 private:
  bool Refuse(const char* name, const std::string& what);

  CheckedFile& file_;
  pugi::xml_node element_;
};

}  // namespace korval::apps
