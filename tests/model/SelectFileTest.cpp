// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Failure.h"
#include "model/SelectFile.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::model {
namespace {

using protocol::CommandCode;
using testing::ElementsAre;
using tests::Fields;
using State = protocol::SessionState::State;

class SelectFileTest : public testing::Test {
 protected:
  tests::Reply Select(const std::string& description, const std::string& section, std::int32_t address = 16) {
    return bench_.Run(CommandCode::kSelectFile, Fields().String(description).String(section).Word(address));
  }

  // The message of an error record with code 1.
  static std::string Message(const tests::Reply& reply) {
    EXPECT_EQ(reply.status, 65535);
    const std::string record = tests::ErrorRecord(reply.data);
    EXPECT_EQ(record.find("1 "), 0U);
    return record.substr(2);
  }

  std::string EcuFile() const { return bench_.folder.Path("engine_ecu.xml"); }

  void DescribeMessaging(const std::string& url) {
    bench_.folder.Write("can.xml", "<xml><ecu name='ENGINE' url='engine_ecu.xml'/><ecu name='AUTOCAN' url='" +
                                       url + "'/></xml>");
  }

  tests::CommandBench bench_;
};

TEST_F(SelectFileTest, AnswersTheIdAndTracesWhatItLoaded) {
  const auto reply = Select("engine.xml", "ENGINE");
  EXPECT_EQ(reply.status, 0);
  EXPECT_EQ(reply.data.ToHex(), "0001");
  EXPECT_EQ(bench_.TakeTrace(),
            "select file(engine.xml,ENGINE,16)\r\n" + EcuFile() + " load in Korval session\r\n");
  EXPECT_EQ(bench_.state.Current(), State::kFileSelected);
  EXPECT_EQ(Select("engine.xml", "ENGINE").data.ToHex(), "0002");
}

TEST_F(SelectFileTest, HandsTheParsedEcuFileToTheSession) {
  Select("engine.xml", "ENGINE");
  EXPECT_EQ(bench_.session->log.back(), "OfferEcuFile=" + EcuFile());
  ASSERT_NE(bench_.session->offered, nullptr);
  EXPECT_EQ(bench_.session->offered->Function(), "MOTOR");
}

TEST_F(SelectFileTest, FailureIsTracedInTwoLinesAndAnswered) {
  EXPECT_EQ(Message(Select("engine.xml", "BRAKES")), "select file error : Binary file 'BRAKES' not found");
  EXPECT_EQ(
      bench_.TakeTrace(),
      "select file(engine.xml,BRAKES,16)\r\n"
      "   error when loading korval file : engine.xml\r\n   error : Binary file 'BRAKES' not found\r\n");
  EXPECT_EQ(bench_.state.Current(), State::kIdentify);
  EXPECT_EQ(bench_.files.Count(), 1);
  EXPECT_EQ(bench_.file_view.clears, 0);
}

TEST_F(SelectFileTest, MessageAboutALongNameIsCutWhereTheFrameEnds) {
  const std::string message = Message(Select("engine.xml", std::string(65490, 'X')));
  EXPECT_EQ(message.substr(0, 40), "select file error : Binary file 'XXXXXXX");
  EXPECT_EQ(message.size(), 65534U - 8 - 2 - 2);
}

TEST_F(SelectFileTest, MessagingWithoutANameIsTracedAndTheSelectionStands) {
  DescribeMessaging("");
  EXPECT_EQ(Select("can.xml", "ENGINE").status, 0);
}

TEST_F(SelectFileTest, FailureIsTracedOnceWhileDebuggingToo) {
  bench_.console.SetDebugTrace(true);
  Select("engine.xml", "BRAKES");
  EXPECT_EQ(
      bench_.TakeTrace(),
      "select file(engine.xml,BRAKES,16)\r\n"
      "   error when loading korval file : engine.xml\r\n   error : Binary file 'BRAKES' not found\r\n");
}

TEST_F(SelectFileTest, FailureInStateFileSelectedKeepsTheState) {
  bench_.SelectEngine();
  Select("engine.xml", "BRAKES");
  EXPECT_EQ(bench_.state.Current(), State::kFileSelected);
}

TEST_F(SelectFileTest, NameThatLeadsOutOfTheFolderIsASelectFileError) {
  EXPECT_EQ(Message(Select("..\\..\\etc\\passwd", "X")).find("select file error : "), 0U);
}

TEST_F(SelectFileTest, RequestThatEndsEarlyNamesTheMissingField) {
  const auto message = [this](const Fields& fields) {
    return Message(bench_.Run(CommandCode::kSelectFile, fields));
  };
  EXPECT_EQ(message(Fields()),
            "select file error : select file : Invalid 'description file' parameter, string expected");
  EXPECT_EQ(message(Fields().String("engine.xml")),
            "select file error : select file : Invalid 'section' parameter, string expected");
  EXPECT_EQ(message(Fields().String("engine.xml").String("ENGINE")),
            "select file error : select file : Invalid 'address' parameter, word expected");
  EXPECT_EQ(bench_.files.Count(), 0);
}

TEST_F(SelectFileTest, MessagingFileGoesToTheFunctionCan) {
  const auto can = bench_.session->AddEcu("CAN", "CAN", "CAN");
  DescribeMessaging("messaging.dbc");
  EXPECT_EQ(Select("can.xml", "ENGINE").status, 0);
  EXPECT_THAT(can->messaging, ElementsAre(bench_.folder.Path("messaging.dbc")));
  EXPECT_EQ(bench_.TakeTrace(), "select file(can.xml,ENGINE,16)\r\n" + EcuFile() +
                                    " load in Korval session\r\n   messaging automatic loading : " +
                                    bench_.folder.Path("messaging.dbc") + "\r\n");
}

TEST_F(SelectFileTest, FailedMessagingIsTracedAndTheSelectionStands) {
  const auto can = bench_.session->AddEcu("CAN", "CAN", "CAN");
  can->on_load_messaging = [] { throw base::Failure("cannot be read"); };
  DescribeMessaging("messaging.dbc");
  EXPECT_EQ(Select("can.xml", "ENGINE").status, 0);
  EXPECT_EQ(bench_.TakeTrace(), "select file(can.xml,ENGINE,16)\r\n" + EcuFile() +
                                    " load in Korval session\r\n   Error messaging automatic loading : " +
                                    bench_.folder.Path("messaging.dbc") + " cannot be read\r\n");
}

TEST_F(SelectFileTest, MessagingUrlThatLeadsOutOfTheFolderIsASelectFileError) {
  DescribeMessaging("../messaging.dbc");
  EXPECT_EQ(Message(Select("can.xml", "ENGINE")).find("select file error : "), 0U);
}

TEST_F(SelectFileTest, FileListShowsEveryFileOfTheCollection) {
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) {
    answer = {0x61, 0x80, 0x42};
  };
  Select("engine.xml", "BRAKES", 1);
  Select("engine.xml", "ENGINE", 65535);
  EXPECT_THAT(bench_.file_view.rows,
              ElementsAre(ElementsAre("1", "engine.xml", "BRAKES", "1", "", "", ""),
                          ElementsAre("2", "engine.xml", "ENGINE", "65535", "MOTOR", "KWP2000", "618042")));
}

TEST_F(SelectFileTest, IdentificationIsReadOnlyWhileEmpty) {
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) { answer = {0x61, 0x80}; };
  Select("engine.xml", "ENGINE");
  Select("engine.xml", "ENGINE");
  EXPECT_THAT(bench_.engine->sent, ElementsAre("2180", "2180"));  // one for each of the two files
}

TEST_F(SelectFileTest, SecondFileOfAFunctionIsTracedAsTheOneThatServes) {
  bench_.folder.Write("second.xml", "<xml><ecu name='B' url='second_ecu.xml'/></xml>");
  std::filesystem::copy_file(EcuFile(), bench_.folder.Path("second_ecu.xml"));
  bench_.SelectEngine();
  const auto note = [this](const std::string& serving, const std::string& before) {
    return "   the function MOTOR is served by " + bench_.folder.Path(serving) +
           " from now on, no longer by " + bench_.folder.Path(before);
  };
  Select("second.xml", "B");
  EXPECT_THAT(bench_.TakeTrace(), testing::HasSubstr(note("second_ecu.xml", "engine_ecu.xml")));
  Select("second.xml", "B");
  EXPECT_THAT(bench_.TakeTrace(), testing::Not(testing::HasSubstr("from now on")));
  Select("engine.xml", "ENGINE");
  EXPECT_THAT(bench_.TakeTrace(), testing::HasSubstr(note("engine_ecu.xml", "second_ecu.xml")));
  bench_.files.Clear();
  Select("second.xml", "B");
  EXPECT_THAT(bench_.TakeTrace(), testing::Not(testing::HasSubstr("from now on")));
}

TEST_F(SelectFileTest, OneReadingIdentifiesAllFilesOfAnEcu) {
  const auto other = std::make_shared<tests::FakeSession>();
  const auto unknown = other->AddEcu("MOTOR", "Engine control", "UDS");
  bench_.diagnosis.SetSession(other);
  for (int i = 0; i < 3; ++i) Select("engine.xml", "ENGINE");
  EXPECT_TRUE(unknown->sent.empty());
  bench_.diagnosis.SetSession(bench_.session);
  bench_.engine->on_send = [](const base::ByteBuffer&, base::ByteBuffer& answer) { answer = {0x61, 0x80}; };
  Select("engine.xml", "ENGINE");
  EXPECT_THAT(bench_.engine->sent, ElementsAre("2180"));
  for (const auto& row : bench_.file_view.rows) EXPECT_EQ(row[6], "6180");
}

TEST_F(SelectFileTest, FileChangedOnDiskIsSeenAtTheNextSelection) {
  bench_.SelectEngine();
  EXPECT_TRUE(bench_.files.Item(1)->IsDataExist("N"));
  // As long as before and at once: its times may be those it had.
  std::ifstream written(bench_.folder.Path("engine.xml"));
  std::string text{std::istreambuf_iterator<char>(written), {}};
  text.replace(text.find("'N'"), 3, "'M'");
  bench_.folder.Write("engine.xml", text);
  Select("engine.xml", "ENGINE");
  EXPECT_TRUE(bench_.files.Item(2)->IsDataExist("M"));
  EXPECT_FALSE(bench_.files.Item(2)->IsDataExist("N"));
  EXPECT_TRUE(bench_.files.Item(1)->IsDataExist("N"));
}

TEST_F(SelectFileTest, OtherProtocolsAreShownWithoutIdentification) {
  bench_.session = std::make_shared<tests::FakeSession>();
  const auto ecu = bench_.session->AddEcu("MOTOR", "Engine control", "UDS");
  bench_.diagnosis.SetSession(bench_.session);
  Select("engine.xml", "ENGINE", 0);
  EXPECT_TRUE(ecu->sent.empty());
  EXPECT_THAT(bench_.file_view.rows,
              ElementsAre(ElementsAre("1", "engine.xml", "ENGINE", "0", "MOTOR", "UDS", "")));
}

TEST_F(SelectFileTest, FunctionThatTheSessionDoesNotKnowIsShownWithoutProtocol) {
  bench_.diagnosis.SetSession(std::make_shared<tests::FakeSession>());
  EXPECT_EQ(Select("engine.xml", "ENGINE", 0).status, 0);
  EXPECT_THAT(bench_.file_view.rows,
              ElementsAre(ElementsAre("1", "engine.xml", "ENGINE", "0", "MOTOR", "", "")));
}

TEST_F(SelectFileTest, ClientLeavingWhileTheIdentificationIsReadLeavesEverythingEmpty) {
  bench_.engine->on_initialise = [this] { bench_.EndSession(); };
  Select("engine.xml", "ENGINE");
  EXPECT_EQ(bench_.state.Current(), State::kIdle);
  EXPECT_EQ(bench_.files.Count(), 0);
  EXPECT_TRUE(bench_.file_view.rows.empty());
}

TEST_F(SelectFileTest, ClientLeavingWhileTheMessagingIsLoadedEndsTheSelection) {
  const auto can = bench_.session->AddEcu("CAN", "CAN", "CAN");
  can->on_load_messaging = [this] { bench_.EndSession(); };
  DescribeMessaging("messaging.dbc");
  EXPECT_EQ(Select("can.xml", "ENGINE").status, 65535);
  EXPECT_EQ(bench_.state.Current(), State::kIdle);
}

TEST_F(SelectFileTest, SelectionThatIsCalledOffSetsNoState) {
  const auto can = bench_.session->AddEcu("CAN", "CAN", "CAN");
  can->on_load_messaging = [&] { bench_.command->CallOff(); };
  DescribeMessaging("messaging.dbc");
  EXPECT_EQ(Select("can.xml", "ENGINE").status, tests::Reply::kNone);
  EXPECT_EQ(bench_.state.Current(), State::kIdentify);
  EXPECT_TRUE(bench_.engine->sent.empty());
}

TEST_F(SelectFileTest, IdentificationThatIsCalledOffIsReadWithTheNextSelection) {
  bench_.engine->on_initialise = [&] { bench_.command->CallOff(); };
  Select("engine.xml", "ENGINE");
  EXPECT_TRUE(bench_.engine->sent.empty());
  bench_.engine->on_initialise = nullptr;
  Select("engine.xml", "ENGINE");
  EXPECT_FALSE(bench_.engine->sent.empty());
}

TEST_F(SelectFileTest, SessionTakenAwayByTheHostIsASelectFileError) {
  bench_.diagnosis.SetSession(nullptr);
  EXPECT_EQ(Message(Select("engine.xml", "ENGINE")),
            "select file error : No diagnostic session, send init first");
}

TEST_F(SelectFileTest, BeforeIdentifyItIsRefused) {
  bench_.state.Set(State::kInit);
  const auto reply = Select("engine.xml", "ENGINE");
  EXPECT_EQ(reply.status, 9027);
  EXPECT_TRUE(reply.data.Empty());
  EXPECT_EQ(bench_.TakeTrace(), "select file receive without init and identify, not processed\r\n");
}

}  // namespace
}  // namespace korval::model
