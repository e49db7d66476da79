// SPDX-License-Identifier: MIT
// The grammar of the three kinds of XML files: description file, ECU file, CAN messaging file. Names, kinds,
// units, defaults, ranges and enumerations stand here alone: the readers and korval-check take them from
// here, data/schema is made of it, and the tables of docs/ecu-file.md are tested against it. How a value is
// understood that has a place in an enumeration of the program stands with its reader; the choices are in
// that order.
#pragma once

#include <algorithm>
#include <array>
#include <limits>

#include "base/ErrorNumbers.h"
#include "ecu/description/ItemDescription.h"
#include "ecu/description/Timing.h"
#include "ecu/description/TransportDescription.h"
#include "ecu/ecufile/Attribute.h"

namespace korval::ecu {
namespace grammar {

inline constexpr std::int32_t kLastByte = 0xFF;
inline constexpr std::int32_t kHour = 3600000;  // in milliseconds
inline constexpr std::int32_t kDay = 86400000;

constexpr Attribute Of(const TimingParameter& parameter) {
  return Integer(parameter.attribute, parameter.fallback, parameter.lowest, parameter.highest, "ms")
      .Symbol(parameter.symbol);
}

constexpr Attribute Of(const TransportParameter& parameter) {
  return Integer(parameter.attribute, parameter.fallback, parameter.lowest, parameter.highest, parameter.unit)
      .Symbol(parameter.symbol);
}

// A list of attributes with those of a parameter table behind it.
template <std::size_t kCount, typename Parameter, std::size_t kParameters>
constexpr auto Joined(const std::array<Attribute, kCount>& attributes,
                      const std::array<Parameter, kParameters>& parameters) {
  std::array<Attribute, kCount + kParameters> joined;
  auto place = std::copy(attributes.begin(), attributes.end(), joined.begin());
  std::transform(parameters.begin(), parameters.end(), place,
                 [](const Parameter& parameter) { return Of(parameter); });
  return joined;
}

inline constexpr std::array kSectionAttributes{Text("name").Required(), Text("url").Required()};

inline constexpr std::array kDataAttributes{Text("name").Required(), Text("shortname").Required()};

inline constexpr auto kFunctionAttributes =
    Joined(Joined(
               std::array{
                   Text("Name").Required(),
                   Text("Ecu"),
                   Choice("Protocol", {"KWP2000", "DiagOnCAN", "CAN"}).Open(),
                   Hex("Address", 0x10, 0, kLastByte),
                   Hex("Tester", 0xF1, 0, kLastByte),
                   Choice("Init", {"fast", "slow", "none"}),
                   Hex("InitAddress", std::nullopt, 0, kLastByte),
                   Choice("Echo", {"auto", "on", "off"}),
                   Choice("Rts", {"on", "off", "as is"}, 2),
                   Choice("Dtr", {"on", "off", "as is"}, 2),
                   Choice("LLine", {"none", "rts", "rts-inverted"}),
                   Choice("WakeUp", {"auto", "break", "byte"}),
                   Choice("Header", {"auto", "format", "format-length", "addresses", "addresses-length"}),
                   Choice("Functional", {"0", "1"}),
                   Integer("Baud", 10400, 1, 4000000, "bit/s"),
                   Hex("Session", std::nullopt, 0, kLastByte),
                   Hex("SessionBaud", std::nullopt, 1, kLastByte),
                   Integer("KeepAliveMs", 2000, 0, kHour, "ms"),
                   Integer("Repeats", std::nullopt, 0, 10),
                   Identifier("RequestId"),
                   Identifier("ResponseId"),
                   Choice("Addressing", {"normal", "extended"}),
                   Hex("Padding", 0x55, 0, kLastByte).Or("none"),
               },
               kTimingParameters),
           kTransportParameters);

inline constexpr std::array kFactAttributes{Text("Name").Required(), Text("Value")};

inline constexpr std::array kRequestAttributes{Text("Name").Required(), Choice("NoAnswer", {"0", "1"})};

inline constexpr std::array kSentAttributes{Bytes("Bytes", 1, kLongestMessage)};

inline constexpr std::array kReceivedAttributes{Integer("MinBytes", 1, 1, kLongestMessage)};

inline constexpr std::array kItemAttributes{
    Text("Name").Required(),
    Choice("Ref", {"1"}, std::nullopt).Open(),
    Integer("FirstByte", std::nullopt, 1, kLongestMessage).Required(),
    Integer("BitOffset", 0, 0, 7),
    Integer("BitsCount", 8, 1, kLongestMessage * 8),
    Choice("Coding", {"unsigned", "signed", "float", "boolean", "ascii", "bytes", "bcd"}),
    Choice("ByteOrder", {"big", "little"}),
    Number("Step", 1),
    Number("Offset", 0),
    Text("Unit"),
};

inline constexpr std::array kTextAttributes{Raw("Value").Required()};

inline constexpr std::array kSimulationAttributes{
    Integer("LatencyMs", 0, 0, kHour, "ms"),
    Integer("DtcPerAnswer", 80, 1, 255),
    Bytes("KeyBytes", 2, 2),
};

inline constexpr std::array kSignalAttributes{
    Text("Item").Required(), Choice("Wave", {"constant", "ramp", "sine", "square", "noise"}),
    Text("Value"),           Number("Min", 0),
    Number("Max", 0),        Integer("PeriodMs", 1000, 1, kDay, "ms"),
};

inline constexpr std::array kDtcAttributes{
    Hex("Code", std::nullopt, 0, 0xFFFF).Required(),
    Hex("Status", 0, 0, kLastByte),
};

inline constexpr std::array kAnswerAttributes{
    Bytes("Request", 1, kLongestMessage).Required(),
    Bytes("Response", 0, kLongestMessage),
};

inline constexpr std::array kFaultAttributes{
    Text("Request"),
    Choice("Init", {"0", "1"}),
    Integer("Number", kNoAnswer, 1, 65535),
    Integer("Times", 1, 0, std::numeric_limits<std::int32_t>::max()),
    Choice("Wire", {"late", "missing", "damaged", "pending", "foreign"}, std::nullopt),
};

inline constexpr std::array kMessagingAttributes{Integer("Bitrate", 500000, 1000, 1000000, "bit/s")};

inline constexpr auto kDiagnosticAttributes = Joined(
    std::array{
        Text("Function").Required(),
        Identifier("RequestId").Required(),
        Identifier("ResponseId").Required(),
        Choice("Addressing", {"normal", "extended"}),
        Hex("Padding", 0x55, 0, kLastByte).Or("none"),
    },
    kTransportParameters);

inline constexpr std::array kFrameAttributes{
    Identifier("Id").Required(),
    Text("Name").Required(),
    Integer("CycleMs", 0, 0, kHour, "ms"),
};

using Count = Element::Count;

// The root has no parent.
inline constexpr Element kXml{"xml", {}, Count::kNeeded};

inline constexpr Element kSection{"ecu", {"xml"}, Count::kAny, kSectionAttributes};
inline constexpr Element kData{"data", {"ecu"}, Count::kAny, kDataAttributes};

inline constexpr Element kTarget{"qor:Target", {"xml"}, Count::kAny};
inline constexpr Element kFunction{"Function", {"qor:Target"}, Count::kNeeded, kFunctionAttributes};
inline constexpr Element kReferenceData{"ReferenceData", {"qor:Target"}};
inline constexpr Element kFact{"Item", {"ReferenceData"}, Count::kAny, kFactAttributes};
inline constexpr Element kRequests{"Requests", {"qor:Target"}};
inline constexpr Element kRequest{"Request", {"Requests"}, Count::kAny, kRequestAttributes};
inline constexpr Element kSent{"Sent", {"Request"}, Count::kOnce, kSentAttributes};
inline constexpr Element kReceived{"Received", {"Request"}, Count::kOnce, kReceivedAttributes};
inline constexpr Element kItem{"DataItem", {"Sent", "Received", "Frame"}, Count::kAny, kItemAttributes};
inline constexpr Element kText{"Text", {"DataItem"}, Count::kAny, kTextAttributes};
inline constexpr Element kSimulation{"Simulation", {"xml"}, Count::kOnce, kSimulationAttributes};
inline constexpr Element kSignal{"Signal", {"Simulation"}, Count::kAny, kSignalAttributes};
inline constexpr Element kDtc{"Dtc", {"Simulation"}, Count::kAny, kDtcAttributes};
inline constexpr Element kAnswer{"Answer", {"Simulation"}, Count::kAny, kAnswerAttributes};
inline constexpr Element kFault{"Fault", {"Simulation"}, Count::kAny, kFaultAttributes};

inline constexpr Element kMessaging{"messaging", {"xml"}, Count::kNeeded, kMessagingAttributes};
inline constexpr Element kDiagnostic{"Diagnostic", {"messaging"}, Count::kAny, kDiagnosticAttributes};
inline constexpr Element kFrame{"Frame", {"messaging"}, Count::kAny, kFrameAttributes};

}  // namespace grammar

/// All of them, for who wants to look through the grammar.
inline constexpr std::array kGrammar{
    grammar::kXml,      grammar::kSection,       grammar::kData,      grammar::kTarget,
    grammar::kFunction, grammar::kReferenceData, grammar::kFact,      grammar::kRequests,
    grammar::kRequest,  grammar::kSent,          grammar::kReceived,  grammar::kItem,
    grammar::kText,     grammar::kSimulation,    grammar::kSignal,    grammar::kDtc,
    grammar::kAnswer,   grammar::kFault,         grammar::kMessaging, grammar::kDiagnostic,
    grammar::kFrame,
};

}  // namespace korval::ecu
