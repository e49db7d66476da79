// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "parameters/ScriptVariables.h"
#include "tests/support/Await.h"
#include "tests/support/CommandBench.h"
#include "tests/support/ErrorRecord.h"

namespace korval::parameters {
namespace {

using base::Variant;
using tests::FailureOf;

class ScriptVariablesTest : public testing::Test {
 protected:
  ScriptVariablesTest() {
    bench_.SelectEngine();
    file_ = bench_.files.ItemId(1);
    speed_->unit = "rpm";
    bench_.engine->AddRequest("THIRD");
  }

  // The value's text, the failure, or "not taken".
  std::string Read(const std::string& name) {
    std::optional<Variant> value;
    std::string failure = FailureOf([&] { value = Value(name); });
    if (failure != "none") return failure;
    return value ? value->ToText() : "not taken";
  }
  std::string Write(const std::string& name, const Variant& value) {
    bool taken = false;
    std::string failure = FailureOf([&] { taken = variables_.Write(*file_, name, value); });
    if (failure != "none") return failure;
    return taken ? "taken" : "not taken";
  }

  tests::CommandBench bench_;
  std::shared_ptr<model::KorvAsapFile> file_;
  std::shared_ptr<tests::FakeRequest> read_ = bench_.engine->AddRequest("READ");
  std::shared_ptr<tests::FakeRequest> write_ = bench_.engine->AddRequest("WRITE");
  std::shared_ptr<tests::FakeDataItem> speed_ = read_->AddAnswerItem("Speed", 812.5);
  std::shared_ptr<tests::FakeDataItem> temp_ = read_->AddAnswerItem("Temp");
  std::shared_ptr<tests::FakeDataItem> idle_ = write_->AddParameter("Idle");
  /// None when the name is no script variable.
  std::optional<Variant> Value(const std::string& name) {
    if (!ScriptVariables::IsVariable(name)) return std::nullopt;
    return tests::Await(variables_.Read(file_, name));
  }

  ScriptVariables variables_{bench_.diagnosis};
};

TEST_F(ScriptVariablesTest, CountsAreIntegers) {
  bench_.engine->reference_data = {"Version", "Part"};
  EXPECT_EQ(Value("qornbrequests"), Variant(std::int32_t{3}));
  EXPECT_EQ(Value("qornbrefdata"), Variant(std::int32_t{2}));
  EXPECT_EQ(Value("qornbdata(READ)"), Variant(std::int32_t{2}));
  EXPECT_EQ(Value("qornbparam(READ)"), Variant(std::int32_t{0}));
  EXPECT_EQ(Value("qornbdata(WRITE)"), Variant(std::int32_t{1}));
  EXPECT_EQ(Value("qornbparam(WRITE)"), Variant(std::int32_t{1}));
}

TEST_F(ScriptVariablesTest, NamesAreGivenByIndexFromOne) {
  bench_.engine->reference_data = {"Version", "Part"};
  EXPECT_EQ(Read("qorrefdata(2)"), "Part");
  EXPECT_EQ(Read("qorrequest(1)"), "READ");
  EXPECT_EQ(Read("qorrequest( 3 )"), "THIRD");
  EXPECT_EQ(Read("qordata(READ;2)"), "Temp");
  EXPECT_EQ(Read("qorparam(WRITE;1)"), "Idle");
}

TEST_F(ScriptVariablesTest, FunctionWithoutReferenceDataCountsZeroAndHasNoIndex) {
  EXPECT_EQ(Read("qornbrefdata"), "0");
  EXPECT_EQ(Read("qorrefdata(1)"), "11001 Syntaxe error : Bad reference data number 1");
}

TEST_F(ScriptVariablesTest, UnreadableIndexIsSyntax) {
  EXPECT_EQ(Read("qorrequest(abc)"), "11001 Syntax error : Bad request number abc");
  EXPECT_EQ(Read("qorrequest()"), "11001 Syntax error : Bad request number ");
  EXPECT_EQ(Read("qorrefdata(1x)"), "11001 Syntax error : Bad reference data number 1x");
  EXPECT_EQ(Read("qordata(READ;x)"), "11001 Syntax error : Bad data number ");
  EXPECT_EQ(Read("qorparam(WRITE;)"), "11001 Syntax error : Bad parameter number ");
  EXPECT_EQ(Read("qorrequest(99999999999)"), "11001 Syntax error : Bad request number 99999999999");
}

TEST_F(ScriptVariablesTest, IndexOutOfRangeIsSyntaxeButForParameters) {
  EXPECT_EQ(Read("qorrequest(99)"), "11001 Syntaxe error : Bad request number 99");
  EXPECT_EQ(Read("qorrequest(0)"), "11001 Syntaxe error : Bad request number 0");
  EXPECT_EQ(Read("qorrequest(-1)"), "11001 Syntaxe error : Bad request number -1");
  EXPECT_EQ(Read("qordata(READ; 3 )"), "11001 Syntaxe error : Bad data number 3");
  EXPECT_EQ(Read("qorparam(WRITE;2)"), "11001 Syntax error : Bad parameter number 2");
}

TEST_F(ScriptVariablesTest, UnknownRequestIsNamed) {
  const std::string text = "11001 Syntax error : Bad request name ";
  EXPECT_EQ(Read("qornbdata(read)"), text + "read");
  EXPECT_EQ(Read("qornbparam(X)"), text + "X");
  EXPECT_EQ(Read("qordata(X;1)"), text + "X");
  EXPECT_EQ(Read("qortext(X;Speed)"), text + "X");
  EXPECT_EQ(Read("qorexecreq(X)"), text + "X");
}

TEST_F(ScriptVariablesTest, TwoArgumentsAreNeeded) {
  const std::string text = "11001 Syntax error : Bad number of parameters (2 needed) ";
  EXPECT_EQ(Read("qordata(REQ)"), text + "REQ");
  EXPECT_EQ(Read("qorparam(A;1;2)"), text + "A;1;2");
  EXPECT_EQ(Read("qortext()"), text);
  EXPECT_EQ(Read("qorvalue(READ)"), text + "READ");
  EXPECT_EQ(Read("qorunit(A;B;)"), text + "A;B;");
}

TEST_F(ScriptVariablesTest, ItemsGiveTextValueAndUnit) {
  speed_->text = "fast";
  EXPECT_EQ(Read("qortext(READ;Speed)"), "fast");
  EXPECT_EQ(Value("qorvalue(READ;Speed)"), Variant(812.5));
  EXPECT_EQ(Read("qorunit(READ;Speed)"), "rpm");
  EXPECT_EQ(Read("qorunit(READ;Temp)"), "");
}

TEST_F(ScriptVariablesTest, ItemWithoutAValueHasNone) {
  EXPECT_EQ(Read("qorvalue(READ;Temp)"), "11001 data not available or invalid");
  EXPECT_EQ(
      Read("qortext(READ;Temp)"),
      "11001 Temp has no text yet: execute its request first, qorexecreq(READ); when that was done, its "
      "answer does not hold the item");
  temp_->value = "";
  EXPECT_EQ(Read("qortext(READ;Temp)"), "");
}

TEST_F(ScriptVariablesTest, UnknownItemIsNamed) {
  EXPECT_EQ(Read("qorvalue(READ;speed)"), "11001 Syntax error : Bad data name speed");
  EXPECT_EQ(Read("qorunit(READ;)"), "11001 Syntax error : Bad data name ");
  EXPECT_EQ(Write("qortext(READ;X)", "v"), "11001 Syntax error : Bad data name X");
}

TEST_F(ScriptVariablesTest, LastCharacterIsNotChecked) {
  EXPECT_EQ(Read("qorrequest(1]"), "READ");
  EXPECT_EQ(Read("qorrequest(1\u00E9"), "READ");
  EXPECT_EQ(Read("qorrequest(12"), "READ");
  EXPECT_EQ(Read("qorrequest("), "11001 Syntax error : Bad request number ");
}

TEST_F(ScriptVariablesTest, OtherNamesAreNotTaken) {
  for (const char* name : {"QORNBREQUESTS", "qornbrequests ", "qornbrequest", "qor", "", "qorinit()",
                           "qorData(READ;1)", "EngineSpeed", "qorrequest"}) {
    EXPECT_EQ(Read(name), "not taken") << name;
  }
}

TEST_F(ScriptVariablesTest, ExecutionReturnsItsErrorNumber) {
  EXPECT_EQ(Value("qorexecreq(READ)"), Variant(std::int32_t{0}));
  EXPECT_EQ(read_->executions, 1);
  read_->on_execute = [] { throw base::Failure(2000, "no answer"); };
  EXPECT_EQ(Read("qorexecreq(READ)"), "2000");
}

TEST_F(ScriptVariablesTest, InitialisationReturnsItsErrorNumber) {
  EXPECT_EQ(Value("qorinit"), Variant(std::int32_t{0}));
  bench_.engine->on_initialise = [] { throw base::Failure(2042, "refused"); };
  EXPECT_EQ(Read("qorinit"), "2042");
}

TEST_F(ScriptVariablesTest, FunctionThatTheSessionDoesNotKnowKeepsItsNumber) {
  bench_.diagnosis.SetSession(std::make_shared<tests::FakeSession>());
  EXPECT_EQ(Read("qornbrequests"), "2020 no ECU file for the function MOTOR");
  EXPECT_EQ(Read("qorinit"), "2020");
}

TEST_F(ScriptVariablesTest, TextAndValueAreWritten) {
  EXPECT_EQ(Write("qorvalue(WRITE;Idle)", 850.0), "taken");
  EXPECT_EQ(idle_->value, Variant(850.0));
  EXPECT_EQ(Write("qortext(WRITE;Idle)", "high"), "taken");
  EXPECT_EQ(idle_->text, "high");
  EXPECT_EQ(Write("qortext(WRITE;Idle)", 12.5), "taken");
  EXPECT_EQ(idle_->text, "12.5");
  EXPECT_EQ(write_->executions, 0);
}

TEST_F(ScriptVariablesTest, OnlyTextAndValueAreWritten) {
  for (const char* name : {"qorunit(WRITE;Idle)", "qorexecreq(WRITE)", "qorinit", "qornbrequests", "Idle"}) {
    EXPECT_EQ(Write(name, 1.0), "not taken") << name;
  }
  EXPECT_EQ(write_->executions, 0);
}

TEST_F(ScriptVariablesTest, ReadOnlyItemIsNamed) {
  EXPECT_EQ(Write("qorvalue(READ;Speed)", "nonsense"), "11001 data Speed is readonly");
  EXPECT_EQ(Write("qortext(READ;Speed)", "x"), "11001 data Speed is readonly");
}

TEST_F(ScriptVariablesTest, RefusedValueIsNotAvailableOrInvalid) {
  idle_->refuses = true;
  EXPECT_EQ(Write("qorvalue(WRITE;Idle)", 1E9), "11001 data not available or invalid");
  EXPECT_EQ(Write("qortext(WRITE;Idle)", "x"), "11001 data not available or invalid");
}

}  // namespace
}  // namespace korval::parameters
