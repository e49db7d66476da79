// SPDX-License-Identifier: MIT
#include <string>

#include "apps/check/EcuFileCheck.h"
#include "apps/check/FileCheck.h"
#include "tests/apps/check/Damage.h"

namespace korval::tests {
namespace {

constexpr std::string_view kRight = R"(<?xml version="1.0" encoding="UTF-8"?>
<xml xmlns:qor="urn:korval:ecu"><qor:Target>
  <Function Name="ENGINE" Protocol="KWP2000" Address="10" Init="fast" Baud="10400" P2Ms="50"
            RequestId="740" ResponseId="18DAF110" Padding="55" BlockSize="8"/>
  <ReferenceData><Item Name="Version" Value="1"/></ReferenceData>
  <Requests>
    <Request Name="READ">
      <Sent Bytes="2101"/>
      <Received MinBytes="11">
        <DataItem Name="Speed" Ref="1" FirstByte="3" BitsCount="16" ByteOrder="little" Step="0.25" Offset="-40"/>
        <DataItem Name="State" FirstByte="5" BitOffset="6" BitsCount="2" Coding="unsigned">
          <Text Value="1">on</Text>
          <Text Value="2">off</Text>
        </DataItem>
        <DataItem Name="Ratio" FirstByte="6" BitsCount="32" Coding="float"/>
        <DataItem Name="Part" FirstByte="10" BitsCount="16" Coding="ascii"/>
      </Received>
    </Request>
    <Request Name="WRITE">
      <Sent Bytes="3B100000">
        <DataItem Name="Low" FirstByte="3" BitOffset="4" BitsCount="4"/>
        <DataItem Name="High" FirstByte="4"/>
      </Sent>
      <Received MinBytes="2"/>
    </Request>
  </Requests></qor:Target>
  <Simulation LatencyMs="0" DtcPerAnswer="80">
    <Signal Item="Speed" Wave="sine" Min="0" Max="4000" PeriodMs="1000"/>
    <Signal Item="State" Value="on"/>
    <Signal Item="Part" Value="AB"/>
    <Dtc Code="0116" Status="60"/>
    <Dtc Code="0117"/>
    <Answer Request="1A90" Response="5A90"/>
    <Answer Request="1A91" Response=""/>
    <Fault Request="READ" Number="2000" Times="1"/>
    <Fault Init="1" Number="2042"/>
    <Fault Request="WRITE" Wire="late"/>
  </Simulation>
</xml>
)";

std::vector<apps::Finding> Check(const std::string& text) {
  apps::CheckedFile file("engine.xml", text);
  apps::CheckFile(file, std::nullopt);
  return file.Findings();
}

TEST(EcuFileCheckTest, FindsNothingInARightFile) {
  EXPECT_THAT(Check(std::string(kRight)), ::testing::IsEmpty());
}

class EcuFileDamage : public ::testing::TestWithParam<Damage> {};

TEST_P(EcuFileDamage, IsFoundOnce) { ExpectOnly(Check(Damaged(kRight, GetParam())), GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Function, EcuFileDamage,
    ::testing::Values(
        Damage{"SecondFunction", "<ReferenceData>", "<Function Name=\"B\"/><ReferenceData>", 5,
               "Function B: the function ENGINE stands before it"},
        Damage{"Protocol", "\"KWP2000\"", "\"KWP\"", 3,
               "Protocol=\"KWP\" is none of KWP2000, DiagOnCAN, CAN."},
        Damage{"Init", "\"fast\"", "\"Fast\"", 3, "Init=\"Fast\" is none of fast, slow, none."},
        Damage{"Echo", "Baud", "Echo=\"yes\" Baud", 3, "Echo=\"yes\" is none of"},
        Damage{"Rts", "Baud", "Rts=\"high\" Baud", 3, "Rts=\"high\" is none of on, off, as is."},
        Damage{"LLine", "Baud", "LLine=\"dtr\" Baud", 3, "none of none, rts, rts-inverted"},
        Damage{"LLineAndRts", "Baud", "LLine=\"rts\" Rts=\"off\" Baud", 3, "Rts has no effect"},
        Damage{"WakeUp", "Baud", "WakeUp=\"slow\" Baud", 3, "none of auto, break, byte"},
        Damage{"Header", "Baud", "Header=\"short\" Baud", 3, "none of auto, format, format-length"},
        Damage{"Functional", "Baud", "Functional=\"yes\" Baud", 3, "none of 0, 1"},
        Damage{"SessionBaud", "Baud", "Session=\"85\" SessionBaud=\"38400\" Baud", 3, "from 0 to FF"},
        Damage{"SessionBaudAlone", "Baud", "SessionBaud=\"03\" Baud", 3, "and there is none"},
        Damage{"AddressTooLong", "Address=\"10\"", "Address=\"110\"", 3, "from 0 to FF"},
        Damage{"AddressWithPrefix", "Address=\"10\"", "Address=\"0x10\"", 3, "no 0x"},
        Damage{"SessionNoHex", "Baud", "Session=\"G1\" Baud", 3, "Session=\"G1\" is no hexadecimal number"},
        Damage{"BaudZero", "10400", "0", 3, "Baud=\"0\" is no whole number from 1 to 4000000."},
        Damage{"BaudNoNumber", "10400", "fast", 3, "Baud=\"fast\" is no whole number"},
        Damage{"TimingOutOfRange", "P2Ms=\"50\"", "P2Ms=\"60001\"", 3, "P2Ms=\"60001\" is no whole number"},
        Damage{"Repeats", "Baud", "Repeats=\"11\" Baud", 3, "from 0 to 10"},
        Damage{"KeepAliveNegative", "Baud", "KeepAliveMs=\"-1\" Baud", 3, "from 0 to 3600000"},
        Damage{"BaseIdentifierTooLarge", "\"740\"", "\"800\"", 3, "RequestId=\"800\" is no CAN identifier"},
        Damage{"ExtendedIdentifierTooLarge", "18DAF110", "28DAF110", 3, "is no CAN identifier"},
        Damage{"SameIdentifiers", "18DAF110", "740", 3, "RequestId and ResponseId are the same"},
        Damage{"Padding", "Padding=\"55\"", "Padding=\"155\"", 3, "Padding=\"155\" is no hexadecimal"},
        Damage{"Addressing", "Padding", "Addressing=\"mixed\" Padding", 3, "none of normal, extended"},
        Damage{"BlockSize", "BlockSize=\"8\"", "BlockSize=\"256\"", 3, "from 0 to 255"},
        Damage{"ReferenceWithoutName", "<Item Name=\"Version\"", "<Item", 5, "Name is missing"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Request, EcuFileDamage,
    ::testing::Values(
        Damage{"NameTwice", "</Requests>", "<Request Name=\"READ\"><Sent Bytes=\"20\"/></Request></Requests>",
               26, "there is a request of this name already"},
        Damage{"NothingSent", "<Sent Bytes=\"2101\"/>", "", 7, "Bytes of Sent is missing"},
        Damage{"NoBytes", " Bytes=\"2101\"", " Bytes=\"\"", 7, "Bytes of Sent is missing"},
        Damage{"BytesNoHex", "2101", "21X1", 8, "Bytes=\"21X1\" is no sequence of bytes"},
        Damage{"HalfAByte", "2101", "210", 8, "two digits a byte"},
        Damage{"TwoSent", "<Sent Bytes=\"2101\"/>", "<Sent Bytes=\"2101\"/><Sent Bytes=\"2102\"/>", 8,
               "only the first one is used"},
        Damage{"TwoReceived", "<Received MinBytes=\"2\"/>", "<Received MinBytes=\"2\"/><Received/>", 24,
               "only the first one is used"},
        Damage{"MinBytesZero", "MinBytes=\"2\"", "MinBytes=\"0\"", 24, "no whole number from 1 to 4095"},
        Damage{"MinBytesMissing", " MinBytes=\"11\"", "", 9, "MinBytes is missing"},
        Damage{"ItemBehindTheAnswer", "MinBytes=\"11\"", "MinBytes=\"10\"", 16,
               "DataItem Part: needs 11 bytes, but the shortest answer (MinBytes) has 10."},
        Damage{"ItemBehindTheBytes", "3B100000", "3B1000", 22,
               "DataItem High: needs 4 bytes, but Bytes has 3."},
        Damage{"Overlap", "BitOffset=\"4\" BitsCount=\"4\"", "BitOffset=\"4\" BitsCount=\"5\"", 22,
               "DataItem High: shares bits with Low"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Item, EcuFileDamage,
    ::testing::Values(
        Damage{"NoName", "Name=\"Ratio\"", "", 15, "the attribute Name is missing; the item is left out."},
        Damage{"NameTwice", "Name=\"Ratio\"", "Name=\"State\"", 15, "this name stands here already"},
        Damage{"NoFirstByte", "FirstByte=\"6\"", "", 15, "the attribute FirstByte is missing"},
        Damage{"FirstByteZero", "FirstByte=\"6\"", "FirstByte=\"0\"", 15, "no whole number from 1 to 4095"},
        Damage{"BitOffsetEight", "BitOffset=\"6\"", "BitOffset=\"8\"", 11, "no whole number from 0 to 7"},
        Damage{"NoBits", "BitsCount=\"2\"", "BitsCount=\"0\"", 11, "BitsCount=\"0\" is no whole number"},
        Damage{"TooManyBits", "BitOffset=\"6\" BitsCount=\"2\"", "BitsCount=\"65\"", 11, "at most 64 bits"},
        Damage{"Coding", "\"unsigned\"", "\"uint\"", 11, "Coding=\"uint\" is none of unsigned, signed"},
        Damage{"ByteOrder", "\"little\"", "\"intel\"", 10, "ByteOrder=\"intel\" is none of big, little."},
        Damage{"LittleInsideAByte", "BitsCount=\"16\" ByteOrder", "BitsCount=\"12\" ByteOrder", 10,
               "ByteOrder little takes whole bytes"},
        Damage{"StepZero", "0.25", "0", 10, "a Step of 0"},
        Damage{"StepWithComma", "0.25", "0,25", 10, "Step=\"0,25\" is no number (a decimal point, no comma"},
        Damage{"OffsetWithUnit", "\"-40\"", "\"-40 K\"", 10, "Offset=\"-40 K\" is no number"},
        Damage{"MoreDigitsThanASingle", "BitsCount=\"16\" ByteOrder=\"little\" Step=\"0.25\" Offset=\"-40\"",
               "BitsCount=\"32\" Coding=\"bcd\"", 10, "its values can have more digits than a single holds"},
        Damage{"FloatOf24Bits", "\"32\"", "\"24\"", 15, "a float has 32 or 64 bits"},
        Damage{"AsciiOf12Bits", "BitsCount=\"16\" Coding=\"ascii\"", "BitsCount=\"12\" Coding=\"ascii\"", 16,
               "takes whole bytes from a byte's start"},
        Damage{"BehindTheLongestMessage", "FirstByte=\"5\" BitOffset=\"6\"",
               "FirstByte=\"4095\" BitOffset=\"7\"", 11, "its bits end behind byte 4095"},
        Damage{"RefOtherThanOne", "Ref=\"1\"", "Ref=\"true\"", 10, "Ref=\"true\" is none of 1."},
        Damage{"TextWithoutNumber", "Value=\"2\"", "Value=\"two\"", 13, "Value is no whole number"},
        Damage{"TextTwice", "Value=\"2\"", "Value=\"1\"", 13, "this value has a name already"},
        Damage{"TextOutOfReach", "Value=\"2\"", "Value=\"4\"", 13, "the item cannot hold this value"},
        Damage{"TextOfAFloat", "Coding=\"float\"/>",
               "Coding=\"float\"><Text Value=\"1\">on</Text></DataItem>", 15, "has no effect"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Spelling, EcuFileDamage,
    ::testing::Values(Damage{"LetterMissing", "Address=", "Adress=", 3,
                             "the attribute Adress is unknown and ignored; is Address meant?"},
                      Damage{"LetterTooMany", "Offset=\"-40\"", "Offsets=\"-40\"", 10, "is Offset meant?"},
                      Damage{"OtherLetter", "BitsCount=\"2\"", "BitsCounz=\"2\"", 11, "is BitsCount meant?"},
                      Damage{"LettersChangedPlaces", "Baud", "Buad", 3, "is Baud meant?"},
                      Damage{"OtherCase", "LatencyMs", "LatencyMS", 27, "is LatencyMs meant?"},
                      Damage{"Element", "<Dtc Code=\"0117\"", "<DTC Code=\"0117\"", 32,
                             "the element DTC is unknown and ignored; is Dtc meant?"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Place, EcuFileDamage,
    ::testing::Values(Damage{"SimulationInsideTheTarget", "<ReferenceData>", "<Simulation/><ReferenceData>",
                             5, "Simulation: it is ignored inside qor:Target; it belongs into xml."},
                      Damage{"ItemBesideTheAnswer", "<Sent Bytes=\"2101\"/>",
                             "<Sent Bytes=\"2101\"/><DataItem Name=\"A\"/>", 8,
                             "it belongs into Sent or Received or Frame."}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Simulation, EcuFileDamage,
    ::testing::Values(
        Damage{"Latency", "LatencyMs=\"0\"", "LatencyMs=\"-1\"", 27, "LatencyMs=\"-1\" is no whole number"},
        Damage{"DtcPerAnswer", "\"80\"", "\"256\"", 27, "from 1 to 255"},
        Damage{"SignalOfNothing", "Item=\"Speed\"", "Item=\"speed\"", 28,
               "no request of the file has a data item"},
        Damage{"SignalWithoutItem", "Item=\"Speed\"", "", 28, "Item is missing"},
        Damage{"SignalTwice", "Item=\"Part\" Value=\"AB\"", "Item=\"State\" Value=\"off\"", 30,
               "this item has a signal already"},
        Damage{"Wave", "\"sine\"", "\"sinus\"", 28, "Wave=\"sinus\" is none of constant"},
        Damage{"PeriodZero", "\"1000\"", "\"0\"", 28, "PeriodMs=\"0\" is no whole number"},
        Damage{"MinNoNumber", "Min=\"0\"", "Min=\"none\"", 28, "Min=\"none\" is no number"},
        Damage{"MaxOutOfReach", "\"4000\"", "\"20000\"", 28, "Max 20000 is nothing that the item can hold"},
        Damage{"NeitherMinNorMax", "Min=\"0\" Max=\"4000\"", "", 28, "has neither Min nor Max"},
        Damage{"ValueWithoutMeaning", "\"on\"/", "\"maybe\"/", 29,
               "Value maybe is nothing that the item can hold"},
        Damage{"TextTooLong", "\"AB\"", "\"ABC\"", 30, "Value ABC is nothing that the item can hold"},
        Damage{"MovingText", "Value=\"AB\"", "Wave=\"ramp\" Max=\"1\"", 30, "a text does not move"},
        Damage{"DtcWithoutCode", "Code=\"0117\"", "", 32, "Code is missing"},
        Damage{"DtcNoHex", "\"0117\"", "\"P0117\"", 32, "Code=\"P0117\" is no hexadecimal number"},
        Damage{"DtcTwice", "\"0117\"", "\"0116\"", 32, "this trouble code stands twice"},
        Damage{"DtcStatus", "\"60\"", "\"160\"", 31, "Status=\"160\" is no hexadecimal number from 0 to FF"},
        Damage{"AnswerWithoutRequest", "Request=\"1A90\"", "", 33, "Request is missing"},
        Damage{"AnswerNoHex", "\"5A90\"", "\"5A9\"", 33, "Response=\"5A9\" is no sequence of bytes"},
        Damage{"AnswerNeverUsed", "1A91", "1A 90", 34, "this one is never used"},
        Damage{"FaultOfNothing", "Fault Request=\"READ\"", "Fault Request=\"READS\"", 35,
               "the file has no request of this name"},
        Damage{"FaultWithoutCause", "Init=\"1\"", "", 36, "names neither a Request nor Init=\"1\""},
        Damage{"FaultNumber", "\"2000\"", "\"0\"", 35, "Number=\"0\" is no whole number from 1 to 65535"},
        Damage{"FaultTimes", "Times=\"1\"", "Times=\"-1\"", 35, "Times=\"-1\" is no whole number"},
        Damage{"FaultWire", "\"late\"", "\"later\"", 37, "Wire=\"later\" is none of late"},
        Damage{"SimulationTwice", "</xml>", "<Simulation/></xml>", 39, "only the first one is used"}),
    NameOf);

TEST(EcuFileCheckTest, TellsWhatBecomesOfAFileWithoutAFunctionsName) {
  const auto findings = Check(Damaged(kRight, {"", "Function Name=\"ENGINE\"", "Function", 0, ""}));
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].line, 2U);
  EXPECT_THAT(findings[0].sentence, ::testing::HasSubstr("the file names no function"));
  EXPECT_EQ(findings[1].line, 3U);
}

TEST(EcuFileCheckTest, TellsARequestWithoutAName) {
  const auto findings = Check(Damaged(kRight, {"", "Request Name=\"WRITE\"", "Request", 0, ""}));
  ASSERT_EQ(findings.size(), 2U);  // and the fault that names it
  EXPECT_EQ(findings[0],
            (apps::Finding{19, "Request: the attribute Name is missing; the request is left out."}));
}

TEST(EcuFileCheckTest, DoesNotBlameTheSignalOfAnItemThatIsLeftOut) {
  const auto findings = Check(Damaged(kRight, {"", "\"unsigned\"", "\"uint\"", 0, ""}));
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].line, 11U);
}

TEST(EcuFileCheckTest, PassesOverAnAttributeThatResemblesNone) {
  EXPECT_THAT(Check(Damaged(kRight, {"", "Baud", "Remark=\"new\" Baud", 0, ""})), ::testing::IsEmpty());
}

TEST(EcuFileCheckTest, LetsAnEcuOnCanGiveSignalsToFramesOfAMessagingFile) {
  const std::string text = Damaged(kRight, {"", "\"KWP2000\"", "\"DiagOnCAN\"", 0, ""});
  EXPECT_THAT(Check(Damaged(text, {"", "Item=\"Part\"", "Item=\"WheelSpeed\"", 0, ""})),
              ::testing::IsEmpty());
}

TEST(EcuFileCheckTest, AsksNoBytesOfTheFunctionCan) {
  const std::string text = Damaged(kRight, {"", "\"KWP2000\"", "\"CAN\"", 0, ""});
  EXPECT_THAT(Check(Damaged(text, {"", "<Sent Bytes=\"2101\"/>", "", 0, ""})), ::testing::IsEmpty());
}

TEST(EcuFileCheckTest, TellsTheFirstTroubleCodeTooMany) {
  std::string codes;
  for (int i = 0; i < 255; ++i) codes += "<Dtc Code=\"" + std::to_string(1000 + i) + "\"/>\n";
  const auto findings = Check(Damaged(kRight, {"", "<Dtc Code=\"0117\"/>", codes, 0, ""}));
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].line, 286U);
  EXPECT_THAT(findings[0].sentence, ::testing::HasSubstr("at most 255 trouble codes"));
}

}  // namespace
}  // namespace korval::tests
