// SPDX-License-Identifier: MIT
#include "ecu/description/ErrorTable.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/ErrorNumbers.h"

namespace korval::ecu {
namespace {

struct BuiltIn {
  std::int32_t number;
  std::string_view text;
};

constexpr std::array<BuiltIn, 15> kBuiltIn{{
    {kLinkLost, "The interface or the link to it was lost, or the session was closed"},
    {kNoInterface, "No diagnostic interface configured"},
    {kInterfaceRefused, "The diagnostic interface cannot be opened"},
    {kCanNetworkError, "CAN network error, nobody acknowledges or the bus is off"},
    {kNoAnswer, "No answer from the ECU"},
    {kNegativeAnswer, "Negative answer"},
    {kAnswerTooShort, "Answer too short"},
    {kForeignAnswer, "The answer does not belong to the request"},
    {kUnknownName, "Unknown data or property name"},
    {kReadOnly, "Read only"},
    {kValueRefused, "Value refused"},
    {kNoEcuFile, "No ECU file for this function"},
    {kInitialisationRefused, "The ECU refused or lost its initialisation"},
    {kCommunicationEnded, "The ECU ended the communication"},
    {kTesterPresentUnanswered, "Tester present was not answered"},
}};

}  // namespace

std::string ErrorTable::Text(std::int32_t number) const {
  const auto loaded = texts_.find(number);
  if (loaded != texts_.end()) return loaded->second;
  const auto* const built_in = std::find_if(kBuiltIn.begin(), kBuiltIn.end(),
                                            [&](const BuiltIn& entry) { return entry.number == number; });
  return built_in == kBuiltIn.end() ? "Error " + std::to_string(number) : std::string(built_in->text);
}

base::Failure ErrorTable::MakeFailure(std::int32_t number, const std::string& detail) const {
  return {number, Text(number) + (detail.empty() ? "" : ": " + detail)};
}

}  // namespace korval::ecu
