// SPDX-License-Identifier: MIT
#include <array>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "ecu/description/KLineDescription.h"
#include "ecu/ecufile/FunctionReader.h"
#include "ecu/ecufile/Grammar.h"
#include "ecu/ecufile/ItemReader.h"
#include "ecu/ecufile/SimulationReader.h"

namespace korval::ecu {
namespace {

using grammar::kFunction;

pugi::xml_document Parsed(const std::string& text) {
  pugi::xml_document document;
  EXPECT_TRUE(document.load_string(text.c_str())) << text;
  return document;
}

FunctionDescription FunctionWith(const std::string& attributes) {
  return ReadFunction(Parsed("<Function Name='F' " + attributes + "/>").document_element());
}

// The place that a reader makes of each choice of an attribute.
template <typename Read>
std::vector<int> PlacesRead(const Attribute& rule, Read read) {
  std::vector<int> places;
  for (const char* choice : NamesIn(rule.choices)) {
    places.push_back(static_cast<int>(read(std::string(rule.name) + "='" + choice + "'")));
  }
  return places;
}

TEST(GrammarTest, ChoicesStandInTheOrderOfTheirEnumerations) {
  using testing::ElementsAre;
  using Link = KLineDescription;
  const auto kline = [](auto Link::*member) {
    return [member](const std::string& attribute) { return FunctionWith(attribute).KLine().*member; };
  };
  EXPECT_THAT(kFunction["Init"].choices, testing::Contains(testing::StrEq("slow")));
  EXPECT_EQ(FunctionWith("Init='slow'").KLine().init, Link::Init::kSlow);
  EXPECT_EQ(FunctionWith("Init='none'").KLine().init, Link::Init::kNone);
  EXPECT_EQ(FunctionWith("Echo='on'").KLine().echo, Link::Echo::kOn);
  EXPECT_EQ(FunctionWith("Echo='off'").KLine().echo, Link::Echo::kOff);
  EXPECT_EQ(FunctionWith("LLine='rts'").KLine().l_line, Link::LLine::kRts);
  EXPECT_EQ(FunctionWith("LLine='rts-inverted'").KLine().l_line, Link::LLine::kRtsInverted);
  EXPECT_EQ(FunctionWith("WakeUp='break'").KLine().wake_up, Link::WakeUp::kBreak);
  EXPECT_EQ(FunctionWith("WakeUp='byte'").KLine().wake_up, Link::WakeUp::kByte);
  EXPECT_EQ(FunctionWith("Header='format'").KLine().header, Link::Header::kFormat);
  EXPECT_EQ(FunctionWith("Header='format-length'").KLine().header, Link::Header::kFormatLength);
  EXPECT_EQ(FunctionWith("Header='addresses'").KLine().header, Link::Header::kAddresses);
  EXPECT_EQ(FunctionWith("Header='addresses-length'").KLine().header, Link::Header::kAddressesLength);
  EXPECT_EQ(FunctionWith("Rts='on'").KLine().rts, true);
  EXPECT_EQ(FunctionWith("Rts='off'").KLine().rts, false);
  EXPECT_EQ(FunctionWith("Dtr='as is'").KLine().dtr, std::nullopt);
  EXPECT_THAT(PlacesRead(kFunction["Header"], kline(&Link::header)), ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(PlacesRead(kFunction["WakeUp"], kline(&Link::wake_up)), ElementsAre(0, 1, 2));
}

TEST(GrammarTest, CodingsWavesAndWireFaultsStandInTheOrderOfTheirEnumerations) {
  const auto coding = [](const char* name) {
    const auto item = ReadDataItem(
        Parsed(std::string("<DataItem Name='V' FirstByte='1' BitsCount='32' Coding='") + name + "'/>")
            .document_element());
    return item ? item->coding : Coding{};
  };
  constexpr std::array kCodings{Coding::kUnsigned, Coding::kSigned, Coding::kFloat, Coding::kBoolean,
                                Coding::kAscii,    Coding::kBytes,  Coding::kBcd};
  constexpr std::array<const char*, 7> kNames{"unsigned", "signed", "float", "boolean",
                                              "ascii",    "bytes",  "bcd"};
  for (std::size_t i = 0; i < kNames.size(); ++i) EXPECT_EQ(coding(kNames[i]), kCodings[i]) << kNames[i];

  const auto simulation = ReadSimulation(
      Parsed(
          "<Simulation><Signal Item='A' Wave='ramp'/><Signal Item='A' Wave='sine'/><Signal Item='A' "
          "Wave='square'/><Signal Item='A' Wave='noise'/><Fault Request='R' Wire='late'/><Fault Request='R' "
          "Wire='missing'/><Fault Request='R' Wire='damaged'/><Fault Request='R' Wire='pending'/><Fault "
          "Request='R' Wire='foreign'/><Fault Request='R' Wire='cut'/></Simulation>")
          .document_element());
  using Wave = SignalDescription::Wave;
  constexpr std::array kWaves{Wave::kRamp, Wave::kSine, Wave::kSquare, Wave::kNoise};
  ASSERT_EQ(simulation.signals.size(), kWaves.size());
  for (std::size_t i = 0; i < kWaves.size(); ++i) EXPECT_EQ(simulation.signals[i].wave, kWaves[i]);
  constexpr std::array kFaults{WireFault::kLate, WireFault::kMissing, WireFault::kDamaged,
                               WireFault::kPending, WireFault::kForeign};
  ASSERT_EQ(simulation.faults.size(), kFaults.size() + 1);
  for (std::size_t i = 0; i < kFaults.size(); ++i) EXPECT_EQ(simulation.faults[i].wire, kFaults[i]);
  EXPECT_EQ(simulation.faults.back().wire, std::nullopt);
}

// A description that another reader makes, and fills in half, has the defaults of the files.
TEST(GrammarTest, DefaultsAreThoseOfAnEmptyDescription) {
  const FunctionDescription read = FunctionWith("");
  const FunctionDescription made;
  EXPECT_EQ(read.protocol, made.protocol);
  EXPECT_EQ(read.address, made.address);
  EXPECT_EQ(read.tester, made.tester);
  EXPECT_EQ(read.session, made.session);
  EXPECT_EQ(read.keep_alive, made.keep_alive);
  EXPECT_EQ(read.repeats, made.repeats);
  EXPECT_EQ(read.KLine().init, made.KLine().init);
  EXPECT_EQ(read.KLine().init_address, made.KLine().init_address);
  EXPECT_EQ(read.KLine().baud, made.KLine().baud);
  EXPECT_EQ(read.KLine().echo, made.KLine().echo);
  EXPECT_EQ(read.KLine().rts, made.KLine().rts);
  EXPECT_EQ(read.KLine().l_line, made.KLine().l_line);
  EXPECT_EQ(read.KLine().wake_up, made.KLine().wake_up);
  EXPECT_EQ(read.KLine().header, made.KLine().header);
  EXPECT_EQ(read.KLine().functional, made.KLine().functional);
  const auto item = ReadDataItem(Parsed("<DataItem Name='V' FirstByte='1'/>").document_element());
  ItemDescription plain;
  plain.name = "V";
  EXPECT_EQ(item, plain);
  const auto simulation =
      ReadSimulation(Parsed("<Simulation><Signal Item='A'/></Simulation>").document_element());
  EXPECT_EQ(simulation.latency, SimulationDescription().latency);
  EXPECT_EQ(simulation.dtc_per_answer, SimulationDescription().dtc_per_answer);
  EXPECT_EQ(simulation.signals.at(0).period, SignalDescription().period);
}

TEST(GrammarTest, NamesAreUniqueAndParentsAreElements) {
  std::set<std::string> elements;
  for (const Element& element : kGrammar) {
    EXPECT_TRUE(elements.insert(element.name).second) << element.name;
    std::set<std::string> attributes;
    for (const Attribute& attribute : element.attributes) {
      EXPECT_TRUE(attributes.insert(attribute.name).second) << element.name << " " << attribute.name;
      EXPECT_LE(attribute.lowest, attribute.highest) << attribute.name;
    }
  }
  for (const Element& element : kGrammar) {
    for (const char* parent : NamesIn(element.parents)) EXPECT_TRUE(elements.contains(parent)) << parent;
  }
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

// Attributes and elements that a source looks for by a name of its own.
std::vector<std::string> NamesLookedFor(const std::string& source) {
  static const std::regex kCall(R"re((?:attribute|child|children)\("(\w[\w:]*)")re");
  std::vector<std::string> names;
  for (std::sregex_iterator match(source.begin(), source.end(), kCall), end; match != end; ++match) {
    names.push_back((*match)[1].str());
  }
  return names;
}

TEST(GrammarTest, ReadersLookForNothingThatTheGrammarDoesNotHave) {
  EXPECT_THAT(NamesLookedFor("node.attribute(\"Name\"), node.children(\"qor:Target\")"),
              testing::ElementsAre("Name", "qor:Target"));
  std::size_t sources = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KORVAL_SOURCE_DIR "/ecu/ecufile")) {
    if (entry.path().extension() != ".cpp" || entry.path().filename() == "ErrorFile.cpp") continue;
    EXPECT_THAT(NamesLookedFor(ReadFile(entry.path())), testing::IsEmpty()) << entry.path();
    ++sources;
  }
  EXPECT_GE(sources, 6U);
}

// The server's own reader of description files and of the items on offer knows nothing of this library.
TEST(GrammarTest, ServerLooksForNothingElseInDescriptionFiles) {
  std::set<std::string> known;
  for (const Element& element : kGrammar) {
    known.insert(element.name);
    for (const Attribute& attribute : element.attributes) known.insert(attribute.name);
  }
  for (const auto& entry : std::filesystem::directory_iterator(KORVAL_SOURCE_DIR "/model")) {
    if (entry.path().extension() != ".cpp") continue;
    for (const std::string& name : NamesLookedFor(ReadFile(entry.path()))) {
      EXPECT_TRUE(known.contains(name)) << name << " in " << entry.path();
    }
  }
}

}  // namespace
}  // namespace korval::ecu
