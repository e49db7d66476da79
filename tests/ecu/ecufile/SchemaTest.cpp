// SPDX-License-Identifier: MIT
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "tests/ecu/ecufile/SchemaText.h"
#include "tests/support/TempFolder.h"

namespace korval::tests {
namespace {

constexpr char kExamples[] = KORVAL_SOURCE_DIR "/examples/";

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

TEST(SchemaTextTest, SchemasThatComeWithTheProjectAreThoseOfTheGrammar) {
  for (const auto& [name, text] : SchemaTexts()) {
    EXPECT_EQ(ReadFile(KORVAL_SOURCE_DIR "/data/schema/" + name), text)
        << name << " is out of date: build korval_write_schemas and run it with the folder data/schema";
  }
}

// The status that xmllint ends with: 0 for a valid file, 3 for one that is not, 1 for one that is no XML.
int Validate(const std::string& schema, const std::string& path) {
  const std::string command = "xmllint --noout --nonet --schema '" KORVAL_SOURCE_DIR "/data/schema/" +
                              schema + "' '" + path + "' 2>/dev/null";
  return std::system(command.c_str()) >> 8;  // where a POSIX system puts the status
}

class SchemaTest : public testing::Test {
 protected:
  static constexpr int kValid = 0;
  static constexpr int kInvalid = 3;

  void SetUp() override {
    if (std::system("xmllint --version 2>/dev/null") != 0)
      GTEST_SKIP() << "there is no xmllint (libxml2-utils)";
  }

  int ValidateText(const std::string& schema, const std::string& text) {
    folder_.Write("file.xml", text);
    return Validate(schema, folder_.Path("file.xml"));
  }
  int Ecu(const std::string& requests, const std::string& behind = "") {
    return ValidateText("ecu-file.xsd", "<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='F'/>" +
                                            requests + "</qor:Target>" + behind + "</xml>");
  }
  int Item(const std::string& attributes) {
    return Ecu("<Requests><Request Name='R'><Received><DataItem " + attributes +
               "/></Received></Request></Requests>");
  }

 private:
  TempFolder folder_;
};

TEST_F(SchemaTest, ExamplesAreValid) {
  for (const char* file : {"ecu/abs.xml", "ecu/engine.xml", "host-form/ecu/thermometer.xml"}) {
    EXPECT_EQ(Validate("ecu-file.xsd", std::string(kExamples) + file), kValid) << file;
  }
  EXPECT_EQ(Validate("messaging-file.xsd", std::string(kExamples) + "ecu/messaging.xml"), kValid);
  for (const char* file : {"asap/abs.xml", "asap/engine.xml", "host-form/asap/room.xml"}) {
    EXPECT_EQ(Validate("description-file.xsd", std::string(kExamples) + file), kValid) << file;
  }
}

TEST_F(SchemaTest, DamagedExampleIsNot) {
  std::string text = ReadFile(std::string(kExamples) + "ecu/abs.xml");
  ASSERT_EQ(ValidateText("ecu-file.xsd", text), kValid);
  const std::size_t place = text.find("FirstByte=\"");
  ASSERT_NE(place, std::string::npos);
  text.insert(place + sizeof("FirstByte=\"") - 1, "x");
  EXPECT_EQ(ValidateText("ecu-file.xsd", text), kInvalid);
}

TEST_F(SchemaTest, ValuesOutOfTheGrammarAreRefused) {
  EXPECT_EQ(Item("Name='A' FirstByte='1' BitsCount='16' Step='-.5E-3' Offset=' +4. '"), kValid);
  EXPECT_EQ(Item("Name='A' FirstByte='4095' BitOffset='7' Coding='bcd' ByteOrder='little' Ref='1'"), kValid);
  for (const char* wrong : {"FirstByte='1'", "Name='' FirstByte='1'", "Name='A' FirstByte='0'",
                            "Name='A' FirstByte='4096'", "Name='A' FirstByte='one'",
                            "Name='A' FirstByte='1' BitOffset='8'", "Name='A' FirstByte='1' Step='1,5'",
                            "Name='A' FirstByte='1' Step='NaN'", "Name='A' FirstByte='1' Coding='gray'"}) {
    EXPECT_EQ(Item(wrong), kInvalid) << wrong;
  }
  for (const char* wrong :
       {"<Function/>", "<Function Name='F' Baud='0'/>", "<Function Name='F' Address='100'/>",
        "<Function Name='F' RequestId='800'/>", "<Function Name='F' RequestId='20000000'/>",
        "<Function Name='F' Padding='some'/>", "<Function Name='F' StMinUs='99'/>",
        "<Requests><Request Name='R'><Sent Bytes='2'/></Request></Requests>",
        "<Requests><Request Name='R' NoAnswer='yes'/></Requests>"}) {
    EXPECT_EQ(Ecu(wrong), kInvalid) << wrong;
  }
  for (const char* right : {"<Function Name='F' RequestId='7FF' ResponseId='1FFFFFFF' Padding='none'/>",
                            "<Function Name='F' RequestId='007FF' Padding='aA' Protocol='of the workshop'/>",
                            "<Requests><Request Name='R'><Sent Bytes='21 0 1'/></Request></Requests>"}) {
    EXPECT_EQ(Ecu(right), kValid) << right;
  }
  EXPECT_EQ(Ecu("", "<Simulation KeyBytes='EF'/>"), kInvalid);
  EXPECT_EQ(Ecu("", "<Simulation><Dtc Code='12345'/></Simulation>"), kInvalid);
  EXPECT_EQ(Ecu("", "<Simulation><Answer Request='2180' Response=''/></Simulation>"), kValid);
}

TEST_F(SchemaTest, WhatTheReaderPassesOverIsPassedOver) {
  EXPECT_EQ(Ecu("<Note><Author Name=''/></Note><Function Name='G' Colour='red'/> loose text",
                "<o:Extra xmlns:o='urn:other' a='1'><b/></o:Extra><Extra/>"),
            kValid);
  EXPECT_EQ(Ecu("<Note><DataItem Name='A' FirstByte='0'/></Note>"), kInvalid)
      << "known elements are known anywhere";
}

TEST_F(SchemaTest, EcuFileHasATarget) {
  EXPECT_EQ(ValidateText("ecu-file.xsd", "<xml xmlns:qor='urn:korval:ecu'><Simulation/><qor:Target/></xml>"),
            kValid);
  EXPECT_EQ(ValidateText("ecu-file.xsd", "<xml><Simulation/></xml>"), kInvalid);
}

TEST_F(SchemaTest, OtherKindsOfFilesAreHeldToTheirGrammar) {
  const auto messaging = [&](const std::string& content) {
    return ValidateText("messaging-file.xsd", "<xml><messaging>" + content + "</messaging></xml>");
  };
  EXPECT_EQ(
      messaging("<Diagnostic Function='F' RequestId='740' ResponseId='760'/><Frame Id='1A0' Name='A'/>"),
      kValid);
  EXPECT_EQ(messaging("<Diagnostic Function='F' RequestId='740'/>"), kInvalid);
  EXPECT_EQ(messaging("<Frame Name='A'/>"), kInvalid);
  EXPECT_EQ(ValidateText("messaging-file.xsd", "<xml><messaging Bitrate='999'/></xml>"), kInvalid);
  EXPECT_EQ(ValidateText("description-file.xsd", "<xml><ecu name='A'/></xml>"), kInvalid);
  EXPECT_EQ(
      ValidateText("description-file.xsd", "<xml><ecu name='A' url='a.xml'><data name='B'/></ecu></xml>"),
      kInvalid);
}

}  // namespace
}  // namespace korval::tests
