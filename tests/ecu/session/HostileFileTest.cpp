// SPDX-License-Identifier: MIT
// ECU files that no honest author wrote: they are used as far as they go, or refused with a sentence.
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/Failure.h"
#include "tests/ecu/session/SessionBench.h"
#include "tests/support/Await.h"

namespace korval::ecu {
namespace {

template <typename Step>
void MayFail(Step step) {
  std::string description = "-";
  NumberOf(step, &description);
  EXPECT_FALSE(description.empty());
}

void UseItem(viator3::DataItem& item) {
  for (const base::Variant& value :
       {base::Variant(1E308), base::Variant(-1), base::Variant("A"), base::Variant(),
        base::Variant(std::numeric_limits<double>::quiet_NaN())}) {
    MayFail([&] { item.SetValue(value); });
    MayFail([&] { item.SetText(value.ToText()); });
  }
  EXPECT_TRUE(!item.Value().IsEmpty() || item.Text().empty()) << item.Name();
}

// Gives the number of items.
std::size_t UseEverything(const std::string& simulation, const std::string& requests,
                          const std::string& function = "Name='ENGINE'") {
  SessionBench bench(simulation, function, requests);
  std::size_t items = 0;
  for (const auto& request : bench.Engine()->RequestList()) {
    MayFail([&] { tests::Await(request->Execute()); });
    for (const auto& item : request->Data()) {
      UseItem(*item);
      ++items;
    }
    MayFail([&] { tests::Await(request->Execute()); });
  }
  for (const char* request : {"17FF00", "17FFFF", "14FF00", "2180", "FF"})
    MayFail([&] { bench.Send(request); });
  return items;
}

TEST(HostileFileTest, NumbersOutOfAnyRangeLeaveTheItemOut) {
  std::string items;
  for (const char* number :
       {"0", "-1", "2147483647", "-2147483648", "99999999999999999999", "1E9", "0x3", "", "NaN"}) {
    for (const char* attribute : {"FirstByte", "BitsCount", "BitOffset", "Step", "Offset"}) {
      for (const char* coding :
           {"unsigned", "signed", "float", "boolean", "ascii", "bytes", "bcd", "other"}) {
        items += "<DataItem Name='X' ";
        if (std::string(attribute) != "FirstByte") items += "FirstByte='3' ";
        items += std::string(attribute) + "='" + number + "' Coding='" + coding + "'/>";
      }
    }
  }
  UseEverything(">", "<Request Name='R'><Sent Bytes='2101'>" + items + "</Sent><Received>" + items +
                         "</Received></Request>");
}

TEST(HostileFileTest, LastByteOfTheLongestMessageCanBeUsed) {
  EXPECT_EQ(UseEverything(
                ">",
                "<Request Name='R'><Sent Bytes='2101'/><Received MinBytes='4095'><DataItem Name='Z' "
                "FirstByte='4095'/><DataItem Name='Y' FirstByte='4095' BitOffset='1'/></Received></Request>"),
            1U);
}

TEST(HostileFileTest, ItemsMayOverlapAndStandOnTheServiceByte) {
  const std::string items =
      "<DataItem Name='A' FirstByte='1' BitsCount='64'/><DataItem Name='B' FirstByte='1' BitOffset='3' "
      "BitsCount='13'/>"
      "<DataItem Name='A' FirstByte='2'/>";
  EXPECT_EQ(UseEverything("><Signal Item='A' Wave='noise' Min='0' Max='1E300'/>",
                          "<Request Name='R'><Sent Bytes='2101'>" + items + "</Sent><Received>" + items +
                              "</Received></Request>"),
            6U);
}

TEST(HostileFileTest, SmallFileCannotAskForMuchMemory) {
  std::string requests;
  for (int i = 0; i < 2000; ++i) {
    requests += "<Request Name='R'><Sent Bytes='21'><DataItem Name='X' FirstByte='4000'/></Sent></Request>";
  }
  SessionBench bench(">", "Name='ENGINE'", requests);
  EXPECT_TRUE(bench.Engine()->RequestList().at(0)->Parameters().empty());
}

TEST(HostileFileTest, StepsAndSignalsAtTheEdgeOfTheNumbers) {
  EXPECT_EQ(UseEverything(
                "><Signal Item='A' Wave='ramp' Min='-1.7E308' Max='1.7E308'/><Signal Item='B' Wave='sine' "
                "Min='1E-320' Max='1E308'/><Signal Item='C' Wave='square' Max='1E308'/>",
                "<Request Name='R'><Sent Bytes='2101'/><Received>"
                "<DataItem Name='A' FirstByte='3' Step='1E-308' Offset='1.7E308'/>"
                "<DataItem Name='B' FirstByte='3' Step='1.7E308' Offset='-1.7E308'/>"
                "<DataItem Name='C' FirstByte='3' BitsCount='32' Coding='float' Step='1E-300'/>"
                "</Received></Request>"),
            3U);
}

TEST(HostileFileTest, NamesMayHoldAnything) {
  SessionBench bench(">", "Name='' Ecu='&lt;b>'", "<Request Name=\"'; drop\"><Sent Bytes='2101'/></Request>");
  const auto ecu = bench.session->EcuByFunction("");
  EXPECT_EQ(ecu->Function(), "");
  EXPECT_EQ(ecu->RequestList().at(0)->Name(), "'; drop");
}

TEST(HostileFileTest, AnswersAndFaultsThatContradictTheRequest) {
  UseEverything(
      "><Answer Request='2101' Response='7F'/><Answer Request='2102' Response='7F2178'/>"
      "<Answer Request='2103' Response='00'/><Fault Request='R' Number='65535' Times='2147483647'/>"
      "<Fault Init='1' Number='1' Times='1'/>",
      "<Request Name='A'><Sent Bytes='2101'/></Request><Request Name='B'><Sent Bytes='2102'/></Request>"
      "<Request Name='C'><Sent Bytes='2103'/></Request><Request Name='R'><Sent Bytes='2104'/></Request>");
}

TEST(HostileFileTest, LongestLatencyIsWaitedForInModelTime) {
  SessionBench bench("LatencyMs='3600000'>");
  tests::Await(bench.Request("READ")->Execute());
  EXPECT_EQ(bench.loop->Now(), base::TimePoint(std::chrono::hours(1)));
}

}  // namespace
}  // namespace korval::ecu
