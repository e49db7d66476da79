// SPDX-License-Identifier: MIT
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "base/XmlFile.h"
#include "ecu/session/SessionFactory.h"
#include "model/KorvAsapFile.h"
#include "tests/support/Await.h"
#include "tests/support/ManualEventLoop.h"

namespace korval::tests {
namespace {

using std::chrono::milliseconds;
using ::testing::HasSubstr;

constexpr char kDescriptions[] = KORVAL_EXAMPLES "/asap";
constexpr char kEcuFiles[] = KORVAL_EXAMPLES "/ecu";

struct SelectedSection {
  std::string file;
  std::string section;
};

void PrintTo(const SelectedSection& selected, std::ostream* out) {
  *out << selected.file << " " << selected.section;
}

std::shared_ptr<viator3::Session> OpenSession(const std::shared_ptr<base::EventLoop>& loop) {
  ecu::SessionEnvironment environment;
  environment.loop = loop;
  environment.port = "SIM";
  auto session = ecu::CreateSession(environment);
  tests::Await(session->SetPort(session->Port()));
  return session;
}

/// The examples on the simulated ECU, with a clock that the test turns.
class ExamplesTest : public ::testing::Test {
 protected:
  std::shared_ptr<viator3::Ecu> Select(const std::string& description, const std::string& section) {
    file_ = std::make_unique<model::KorvAsapFile>(model::Folders{kDescriptions, kEcuFiles}, description,
                                                  section, 0, 1);
    file_->ReadDescriptionFile([this](const std::string& path) { return session_->ReadEcuFile(path); });
    session_->OfferEcuFile(file_->TakeEcuFile());
    if (const std::string messaging = file_->GetAutoCanFile(); !messaging.empty()) {
      tests::Await(session_->EcuByFunction("CAN")->LoadMessaging(messaging));
    }
    return session_->EcuByFunction(file_->KorvFunction());
  }
  std::shared_ptr<viator3::InstanceObject> ByName(const std::shared_ptr<viator3::Ecu>& ecu) {
    auto instance = session_->CreateInstance("qor4inst." + file_->BinaryFile());
    instance->SetProtocol(ecu);
    instance->SetNameResolver([this](const std::string& name) { return file_->KorvDataName(name); });
    return instance;
  }
  std::vector<std::string> ShortNames() const {
    const base::XmlDocument description =
        base::LoadXmlFile(std::string(kDescriptions) + "/" + file_->DescriptionFile());
    std::vector<std::string> names;
    for (const pugi::xml_node& section : description->child("xml").children("ecu")) {
      if (section.attribute("name").value() != file_->BinaryFile()) continue;
      for (const pugi::xml_node& data : section.children("data"))
        names.emplace_back(data.attribute("shortname").value());
    }
    return names;
  }
  double Number(viator3::InstanceObject& instance, const std::string& name) {
    return tests::Await(instance.Get(name)).ToDouble().value();
  }

  std::shared_ptr<ManualEventLoop> loop_ = std::make_shared<ManualEventLoop>();
  std::shared_ptr<viator3::Session> session_ = OpenSession(loop_);
  std::unique_ptr<model::KorvAsapFile> file_;
};

class SectionTest : public ExamplesTest, public ::testing::WithParamInterface<SelectedSection> {};

TEST_P(SectionTest, EveryShortNameLeadsToAnItemOfTheEcuFile) {
  Select(GetParam().file, GetParam().section);
  const std::vector<std::string> names = ShortNames();
  EXPECT_FALSE(names.empty());
  for (const std::string& name : names) EXPECT_TRUE(file_->IsDataExist(name)) << name;
}

TEST_P(SectionTest, EveryItemOfEveryAnswerHasAValue) {
  const auto ecu = Select(GetParam().file, GetParam().section);
  for (const auto& request : ecu->RequestList()) {
    tests::Await(request->Execute());
    for (const auto& item : request->Data()) EXPECT_FALSE(item->Value().IsEmpty()) << item->Name();
  }
}

TEST_P(SectionTest, EveryShortNameIsReadByName) {
  const auto instance = ByName(Select(GetParam().file, GetParam().section));
  for (const std::string& name : ShortNames())
    EXPECT_FALSE(tests::Await(instance->Get(name)).IsEmpty()) << name;
}

INSTANTIATE_TEST_SUITE_P(All, SectionTest,
                         ::testing::Values(SelectedSection{"engine.xml", "ENGINE"},
                                           SelectedSection{"engine.xml", "ENGINE_SHORT"},
                                           SelectedSection{"abs.xml", "ABS"}));

TEST_F(ExamplesTest, TheEngineHasTheNamesThatTheDocumentsUse) {
  Select("engine.xml", "ENGINE");
  for (const char* name : {"Speed", "Coolant", "Throttle", "Battery", "Torque", "Lambda", "IdleSpeed"})
    EXPECT_TRUE(file_->IsDataExist(name)) << name;
}

TEST_F(ExamplesTest, EngineValuesStayPlausibleForAMinute) {
  struct Range {
    const char* name;
    double least;
    double most;
  };
  const auto instance = ByName(Select("engine.xml", "ENGINE"));
  for (int step = 0; step < 120; ++step) {
    for (const Range& range : std::vector<Range>{{"Speed", 850, 4200},
                                                 {"Coolant", 88, 93},
                                                 {"Throttle", 2, 96},
                                                 {"Battery", 13.7, 13.9},
                                                 {"Torque", -18, 240},
                                                 {"Lambda", 0.969, 1.031}}) {
      const double value = Number(*instance, range.name);
      EXPECT_GE(value, range.least) << range.name;
      EXPECT_LE(value, range.most) << range.name;
    }
    loop_->Advance(milliseconds(500));
  }
}

TEST_F(ExamplesTest, EngineSpeedRisesAndFalls) {
  const auto instance = ByName(Select("engine.xml", "ENGINE"));
  std::vector<double> speeds;
  for (int step = 0; step < 24; ++step) {
    speeds.push_back(Number(*instance, "Speed"));
    loop_->Advance(milliseconds(500));
  }
  bool rises = false;
  bool falls = false;
  for (std::size_t i = 1; i < speeds.size(); ++i) {
    rises = rises || speeds[i] > speeds[i - 1];
    falls = falls || speeds[i] < speeds[i - 1];
  }
  EXPECT_TRUE(rises);
  EXPECT_TRUE(falls);
}

TEST_F(ExamplesTest, WhatIsWrittenIsReadBack) {
  const auto instance = ByName(Select("engine.xml", "ENGINE"));
  EXPECT_EQ(Number(*instance, "IdleSpeed"), 850);
  tests::Await(instance->Set("IdleSpeed", 900.0F));
  tests::Await(instance->Set("SpeedLimit", 120.0F));
  tests::Await(instance->Set("TorqueCorr", -7.5F));
  tests::Await(instance->Set("Limiter", 1.0F));
  tests::Await(instance->Set("Workshop", "AB-12"));
  tests::Await(instance->Set("FanTest", 2.0F));
  EXPECT_EQ(Number(*instance, "IdleSpeed"), 900);
  EXPECT_EQ(Number(*instance, "SpeedLimit"), 120);
  EXPECT_EQ(Number(*instance, "TorqueCorr"), -7.5);
  EXPECT_EQ(tests::Await(instance->Get("Limiter")), base::Variant(true));
  EXPECT_EQ(tests::Await(instance->Get("Workshop")), base::Variant("AB-12"));
  EXPECT_EQ(Number(*instance, "FanTest"), 2);
}

TEST_F(ExamplesTest, AnIdleSpeedOutOfRangeIsRefused) {
  const auto instance = ByName(Select("engine.xml", "ENGINE"));
  for (const float speed : {590.0F, 1240.0F}) {
    try {
      tests::Await(instance->Set("IdleSpeed", speed));
      ADD_FAILURE() << speed;
    } catch (const base::Failure& failure) {
      EXPECT_EQ(failure.Number(), 2012);
    }
  }
}

TEST_F(ExamplesTest, IdentificationAnswersHoldTheirTexts) {
  const auto instance = ByName(Select("engine.xml", "ENGINE"));
  EXPECT_EQ(tests::Await(instance->Get("PartNumber")), base::Variant("04E906023A"));
  EXPECT_EQ(tests::Await(instance->Get("SoftwareDate")), base::Variant(20251107.0));
  EXPECT_EQ(tests::Await(instance->Get("Calibration")), base::Variant("A517C042"));
  EXPECT_EQ(tests::Await(instance->Get("Vin")), base::Variant("ZZZKORV0000000001"));
}

TEST_F(ExamplesTest, UnitsOfTheAnsiFileAreReadAsCharacters) {
  const auto ecu = Select("engine.xml", "ENGINE");
  EXPECT_EQ(ecu->FindAnswerItem("CoolantTemp")->Unit(), "°C");
  EXPECT_EQ(ecu->FindAnswerItem("InjectionTime")->Unit(), "µs");
  EXPECT_EQ(ecu->FindAnswerItem("InjectedQuantity")->Unit(), "mm³");
  EXPECT_EQ(ecu->FindAnswerItem("EngineTorque")->Unit(), "N·m");
  EXPECT_EQ(ecu->FindAnswerItem("AlcoholContent")->Unit(), "‰");
}

TEST_F(ExamplesTest, TheEngineFileIsStoredInAnsi) {
  std::ifstream file(std::string(kEcuFiles) + "/engine.xml", std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(text, HasSubstr("encoding=\"windows-1252\""));
  EXPECT_THAT(text, HasSubstr("Unit=\"\xB0"
                              "C\""));
}

TEST_F(ExamplesTest, FiveTroubleCodesComeInTwoAnswers) {
  const auto ecu = Select("engine.xml", "ENGINE");
  base::ByteBuffer answer;
  tests::Await(ecu->Send(base::ByteBuffer::FromHex("17FF00"), answer));
  EXPECT_EQ(answer.ToHex(),
            "5705"
            "011660"
            "0171A0"
            "030020");
  tests::Await(ecu->Send(base::ByteBuffer::FromHex("17FFFF"), answer));
  EXPECT_EQ(answer.ToHex(),
            "5705"
            "042024"
            "1602E0");
}

TEST_F(ExamplesTest, TheBrakeFileLoadsItsCanMessaging) {
  const auto ecu = Select("abs.xml", "ABS");
  EXPECT_TRUE(session_->MessagingLoaded());
  EXPECT_EQ(ecu->Protocol(), "DiagOnCAN");
  EXPECT_EQ(tests::Await(ByName(ecu)->Get("SerialNumber")), base::Variant("ABS00017"));
}

}  // namespace
}  // namespace korval::tests
