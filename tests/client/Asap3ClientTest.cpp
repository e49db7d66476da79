// SPDX-License-Identifier: MIT
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "client/Asap3Client.h"
#include "client/ClientErrors.h"

namespace korval::client {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// A line whose far end gives the answers of a script, and none when they run out.
class ScriptedChannel : public Channel {
 public:
  struct Script {
    std::deque<std::string> answers;
    std::vector<std::string> sent;
    std::chrono::milliseconds timeout{};
  };
  explicit ScriptedChannel(Script& script) : script_(script) {}

  void Send(base::ByteView frame) override { script_.sent.push_back(base::HexText(frame)); }
  base::ByteBuffer Receive(std::chrono::milliseconds timeout) override {
    script_.timeout = timeout;
    if (script_.answers.empty()) throw LinkError("no answer");
    const std::string answer = script_.answers.front();
    script_.answers.pop_front();
    return base::ByteBuffer::FromHex(answer);
  }

 private:
  Script& script_;
};

class Asap3ClientTest : public testing::Test {
 protected:
  void Answer(const std::string& hex) { script_.answers = {hex}; }
  std::string Sent() { return std::exchange(script_.sent, {}).at(0); }

  ScriptedChannel::Script script_;
  Asap3Client client_{std::make_unique<ScriptedChannel>(script_), std::chrono::milliseconds(1234)};
};

TEST_F(Asap3ClientTest, InitHasNoFields) {
  Answer("000800020000000A");
  client_.Init();
  EXPECT_EQ(Sent(), "000600020008");
  EXPECT_EQ(script_.timeout, std::chrono::milliseconds(1234));
}

TEST_F(Asap3ClientTest, IdentifyExchangesVersionsAndNames) {
  Answer("002C001400000201001F4B6F7276616C204173617033207365727665722056657273696F6E20322E30009685");
  const ServerIdentity server = client_.Identify(0x0201, "asap3");
  EXPECT_EQ(Sent(), "0010001402010005617361703300F80D");
  EXPECT_EQ(server.version, 0x0201);
  EXPECT_EQ(server.name, "Korval Asap3 server Version 2.0");
}

TEST_F(Asap3ClientTest, SelectFileGivesTheLogicalUnitNumber) {
  Answer("000A000300000001000E");
  EXPECT_EQ(client_.SelectFile("engine.xml", "ENGINE", 16), 1);
  EXPECT_EQ(Sent(), "001C0003000A656E67696E652E786D6C0006454E47494E450010B23B");
}

TEST_F(Asap3ClientTest, SetAcquisitionListsTheNames) {
  Answer("0008000C00000014");
  client_.SetAcquisition(1, 1000, {"Speed", "Vin"});
  EXPECT_EQ(Sent(), "001A000C000103E800020005537065656400000356696E00E557");
}

TEST_F(Asap3ClientTest, OnlineValuesKnowTheMarkerOfNoValue) {
  Answer("0012001300000002444B1000FF0000005372");
  EXPECT_THAT(client_.OnlineValues(), ElementsAre(812.25F, std::nullopt));
  EXPECT_EQ(Sent(), "000600130019");
}

TEST_F(Asap3ClientTest, OnlineValuesOfNothingChosenAreNone) {
  Answer("000A001300000000001D");
  EXPECT_THAT(client_.OnlineValues(), ElementsAre());
}

TEST_F(Asap3ClientTest, OnlineValuesThatEndEarlyAreRefused) {
  Answer("000E001300000002444B1000546E");
  EXPECT_THROW(client_.OnlineValues(), LinkError);
}

TEST_F(Asap3ClientTest, GetParameterGivesFourReals) {
  Answer("0018000E0000444B1000444B1000444B100000000000FD07");
  const Parameter<float> parameter = client_.GetParameter(1, "Speed");
  EXPECT_EQ(Sent(), "0010000E000100055370656564001CF9");
  EXPECT_EQ(parameter.value, 812.25F);
  EXPECT_EQ(parameter.minimum, 812.25F);
  EXPECT_EQ(parameter.maximum, 812.25F);
  EXPECT_EQ(parameter.increment, 0.0F);
}

TEST_F(Asap3ClientTest, SetParameterSendsAReal) {
  Answer("0008000F00000017");
  client_.SetParameter(1, "IdleSpeed", 850);
  EXPECT_EQ(Sent(), "0018000F0001000949646C65537065656400445480009723");
}

TEST_F(Asap3ClientTest, ExtendedGetGivesTheTypeThatTheServerAnswers) {
  Answer("001A00720000000040000000400000004000000000000000C08C");
  const ExtendedAnswer real = client_.ExtendedGet(1, "Vin");
  EXPECT_EQ(Sent(), "000E00720001000356696E00C4ED");
  EXPECT_EQ(std::get<Parameter<float>>(real).value, 2.0F);

  Answer("002A0072000000013FB999999999999A3FB999999999999A3FB999999999999A0000000000000000262C");
  const ExtendedAnswer real8 = client_.ExtendedGet(1, "Vin");
  EXPECT_EQ(std::get<Parameter<double>>(real8).maximum, 0.1);
  EXPECT_EQ(std::get<Parameter<double>>(real8).increment, 0.0);

  Answer("001000720000000200035A5A5A00B4E1");
  EXPECT_EQ(std::get<std::string>(client_.ExtendedGet(1, "Vin")), "ZZZ");

  Answer("000800720000007A");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(client_.ExtendedGet(1, "Vin")));
}

TEST_F(Asap3ClientTest, ExtendedGetRefusesAnUnknownType) {
  Answer("000A0072000000070083");
  EXPECT_THROW(client_.ExtendedGet(1, "Vin"), LinkError);
}

TEST_F(Asap3ClientTest, ExtendedSetSendsTheTypeCodeAndTheValueInItsEncoding) {
  const std::vector<std::pair<ExtendedValue, std::string>> rows = {
      {850.0F, "001400730001000449646C650000445480007AA9"},
      {850.5, "001800730001000449646C650001408A9400000000008AE4"},
      {"21", "001400730001000449646C65000200023231E88A"}};
  for (const auto& [value, frame] : rows) {
    Answer("000800730000007B");
    client_.ExtendedSet(1, "Idle", value);
    EXPECT_EQ(Sent(), frame);
  }
}

TEST_F(Asap3ClientTest, SwitchOfflineSendsTheMode) {
  Answer("0008000D00000015");
  client_.SwitchOffline(1);
  EXPECT_EQ(Sent(), "0008000D00010016");
}

TEST_F(Asap3ClientTest, ExitHasNoFields) {
  Answer("000800320000003A");
  client_.Exit();
  EXPECT_EQ(Sent(), "000600320038");
}

TEST_F(Asap3ClientTest, AnErrorReplyIsRaisedWithItsCodeAndMessage) {
  Answer(
      "0038000EFFFF0001002C"
      "47657420706172616D6574657228312C4E6F706529"
      "203A204572726F72203D206E6F20737563682064617461"
      "F233");
  try {
    client_.GetParameter(1, "Nope");
    FAIL() << "no error was raised";
  } catch (const ErrorReply& error) {
    EXPECT_EQ(error.Status(), 65535);
    EXPECT_EQ(error.Number(), 1);
    EXPECT_EQ(error.Description(), "Get parameter(1,Nope) : Error = no such data");
  }
}

TEST_F(Asap3ClientTest, AReplyToAnotherCommandIsRaisedAsALinkError) {
  Answer("000800320000003A");
  EXPECT_THROW(client_.Init(), LinkError);
}

TEST_F(Asap3ClientTest, NoAnswerIsRaised) { EXPECT_THROW(client_.Init(), LinkError); }

TEST_F(Asap3ClientTest, SendPassesBytesThroughUnchecked) {
  Answer("DEADBEEF");
  EXPECT_EQ(client_.Send(base::ByteBuffer{0x00, 0x01, 0x02}.View()).ToHex(), "DEADBEEF");
  EXPECT_EQ(Sent(), "000102");
}

}  // namespace
}  // namespace korval::client
