// SPDX-License-Identifier: MIT
#include "parameters/ExtendedParameter.h"

#include <optional>
#include <vector>

#include "base/Failure.h"
#include "base/NumberText.h"
#include "parameters/CanFrames.h"
#include "protocol/FieldCodec.h"
#include "protocol/Reply.h"

namespace korval::parameters {
namespace {

enum class DataType : std::int32_t { kReal = 0, kReal8 = 1, kString = 2 };

// The get has always answered with the set's texts, and test benches compare them.
constexpr char kSyntax[] = "extended set parameter(lun,name,datatype,v)";
constexpr char kSet[] = "extended set parameter(";

// Reads the fields of both commands; one that is not there is refused with the number of its type.
class Fields {
 public:
  explicit Fields(base::ByteView area) : area_(area) {}

  std::int32_t Word(const char* field) { return Read(protocol::ReadWord, kBadWord, field, "word"); }
  std::string String(const char* field) { return Read(protocol::ReadString, kBadString, field, "string"); }
  float Real(const char* field) { return Read(protocol::ReadReal, kBadReal, field, "real"); }
  double Real8(const char* field) { return Read(protocol::ReadReal8, kBadReal8, field, "real8"); }

 private:
  template <typename Value>
  Value Read(Value (*read)(base::ByteView, std::size_t&), std::int32_t number, const char* field,
             const char* type) {
    try {
      return read(area_, position_);
    } catch (const base::Failure&) {
      throw base::Failure(
          number, std::string(kSyntax) + " : Invalid '" + field + "' parameter, " + type + " expected");
    }
  }

  base::ByteView area_;
  std::size_t position_ = 0;
};

// A failure of a command's work keeps its number and is introduced by the command's words.
base::Failure Introduced(const std::string& introduction, const base::Failure& failure) {
  return {failure.Number(), introduction + " : Error = " + failure.Description()};
}

// The same number stands for value, minimum and maximum; the increment is 0.
template <typename Number>
void AppendFour(base::ByteBuffer& reply, DataType type, Number value,
                void (*append)(base::ByteBuffer&, Number)) {
  protocol::AppendWord(reply, static_cast<std::int32_t>(type));
  for (const Number number : {value, value, value, Number{0}}) append(reply, number);
}

// A value of a type that the protocol does not have is answered by nothing.
void AppendTyped(base::ByteBuffer& reply, const base::Variant& value) {
  if (const double* real8 = value.As<double>()) {
    AppendFour(reply, DataType::kReal8, *real8, protocol::AppendReal8);
  } else if (value.IsNumeric()) {
    AppendFour(reply, DataType::kReal, value.ToSingle().value_or(0.0F), protocol::AppendReal);
  } else if (const std::string* text = value.As<std::string>()) {
    protocol::AppendWord(reply, static_cast<std::int32_t>(DataType::kString));
    protocol::AppendString(reply, *text);
  }
}

}  // namespace

// The arguments of one extended set parameter, as its messages show them.
struct ExtendedParameter::SetCall {
  File file;
  std::int32_t lun = 0;
  std::string name;
  std::int32_t data_type = 0;

  std::string Head() const {
    return kSet + std::to_string(lun) + "," + name + "," + std::to_string(data_type) + ",";
  }
  std::string Introduction() const { return Head() + "...)"; }
};

ExtendedParameter::ExtendedParameter(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                                     const model::KorvAsapFiles& files, const diag::WindowsScript& script,
                                     protocol::PowerRequest& power_request)
    : console_(console),
      diagnosis_(diagnosis),
      files_(files),
      script_(script),
      power_request_(power_request),
      variables_(diagnosis),
      raw_request_(console, diagnosis),
      read_dtc_(console, diagnosis) {}

void ExtendedParameter::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(
      protocol::CommandCode::kExtendedGetParameter,
      [this](base::ByteView parameters, base::ByteBuffer& reply) { return Get(parameters, reply); });
  dispatcher.Attach(
      protocol::CommandCode::kExtendedSetParameter,
      [this](base::ByteView parameters, base::ByteBuffer& reply) { return Set(parameters, reply); });
}

base::Task<std::int32_t> ExtendedParameter::Set(base::ByteView parameters, base::ByteBuffer& reply) {
  const auto session = diagnosis_.Session();  // held: it may be released in a wait
  try {
    co_await SetValue(parameters);
    co_return protocol::kSuccess;
  } catch (const base::Failure& failure) {
    co_return protocol::ReplyError(console_, reply, failure.Description(), failure.Number());
  }
}

base::Task<void> ExtendedParameter::SetValue(base::ByteView parameters) {
  Fields fields(parameters);
  SetCall call;
  call.lun = fields.Word("lun");
  call.name = fields.String("name");
  call.data_type = fields.Word("datatype");
  call.file = files_.ItemId(call.lun);
  if (!call.file) throw base::Failure(kUnknownLun, call.Introduction() + " : Error unknown Emulator LUN");
  switch (static_cast<DataType>(call.data_type)) {
    case DataType::kReal:
      return SetReal(call, fields.Real("value"));
    case DataType::kReal8:
      return SetReal8(call, fields.Real8("value"));
    case DataType::kString:
      return SetString(call, fields.String("value"));
  }
  throw base::Failure(kUnknownDataType, call.Introduction() + " : Unknown data type");
}

// The call is traced when it has been carried out, and when it has failed.
base::Task<void> ExtendedParameter::SetReal(SetCall call, float value) {
  std::optional<base::Failure> failed;
  try {
    co_await script_.Set(call.file, call.name, value);
  } catch (const base::Failure& failure) {
    failed = failure;
  }
  TraceSet(call, base::SingleText(value));
  if (failed) throw Introduced(call.Introduction(), *failed);
}

base::Task<void> ExtendedParameter::SetReal8(SetCall call, double value) {
  std::optional<base::Failure> failed;
  try {
    co_await WriteByName(call.file, call.name, value);
  } catch (const base::Failure& failure) {
    failed = failure;
  }
  TraceSet(call, base::DoubleText(value));
  if (failed) throw Introduced(call.Introduction(), *failed);
}

base::Task<void> ExtendedParameter::SetString(SetCall call, std::string value) {
  TraceSet(call, value);
  if (call.name == "xcanframe") {
    co_await SendCanFrames(call, value);
    co_return;
  }
  try {
    co_await SetSpecial(call, value);
  } catch (const base::Failure& failure) {
    throw Introduced(call.Introduction(), failure);
  }
}

base::Task<void> ExtendedParameter::SetSpecial(SetCall call, std::string value) {
  if (call.name == "pcreboot") {
    power_request_ = protocol::PowerRequest::kReboot;
  } else if (call.name == "pcshutdown") {
    power_request_ = protocol::PowerRequest::kShutdown;
  } else if (call.name == "kwprequest") {
    co_await raw_request_.Send(call.file, value);
  } else {
    co_await WriteByName(call.file, call.name, value);
  }
}

base::Task<void> ExtendedParameter::SendCanFrames(SetCall call, std::string value) {
  std::vector<viator3::CanFrame> frames;
  for (const std::string_view text : SplitFrames(value)) {
    Trace("Frame = " + std::string(text));
    const auto frame = ReadFrame(text);
    if (!frame) {
      throw base::Failure(kBadCanFrame,
                          call.Head() + value + ") : Invalid can frame syntax (ex : iiiiiiiidd)");
    }
    frames.push_back(*frame);
  }
  std::optional<base::Failure> failed;
  Trace(CanDocumentText(frames));
  try {
    const auto session = diagnosis_.RequireSession();
    co_await session->SendFrames(frames);
  } catch (const base::Failure& failure) {
    failed = failure;
  }
  Trace(CanDocumentText(frames));
  if (failed) throw Introduced(call.Introduction(), *failed);
}

base::Task<void> ExtendedParameter::WriteByName(File file, std::string name, base::Variant value) {
  if (!variables_.Write(*file, name, value)) co_await script_.Set(file, name, value);
}

base::Task<std::int32_t> ExtendedParameter::Get(base::ByteView parameters, base::ByteBuffer& reply) {
  const auto session = diagnosis_.Session();
  try {
    co_await GetValue(parameters, reply);
    co_return protocol::kSuccess;
  } catch (const base::Failure& failure) {
    co_return protocol::ReplyError(console_, reply, failure.Description(), failure.Number());
  }
}

base::Task<void> ExtendedParameter::GetValue(base::ByteView parameters, base::ByteBuffer& reply) {
  Fields fields(parameters);
  const std::int32_t lun = fields.Word("lun");
  const std::string name = fields.String("name");
  const std::string arguments = std::to_string(lun) + "," + name + ")";
  const auto file = files_.ItemId(lun);
  if (!file) {
    throw base::Failure(kUnknownLun, "extended get parameter(" + arguments + " : Error unknown Emulator LUN");
  }
  try {
    AppendTyped(reply, co_await ValueOf(file, name));
  } catch (const base::Failure& failure) {
    throw Introduced(kSet + arguments, failure);
  }
  Trace("extended get parameter(" + arguments + " ok");
}

base::Task<base::Variant> ExtendedParameter::ValueOf(File file, std::string name) {
  if (name == "kwprequest") co_return RawRequest::LastAnswer(*file);
  if (name == "readdtc") co_return co_await read_dtc_.Read(file);
  if (name == "dtccode") co_return file->Dtcs().dtccode();
  if (name == "dtcstatus") co_return file->Dtcs().dtcstatus();
  if (name == "nextdtc") co_return file->Dtcs().NextDtc();
  if (ScriptVariables::IsVariable(name)) co_return co_await variables_.Read(file, name);
  co_return co_await script_.Get(file, name);
}

void ExtendedParameter::TraceSet(const SetCall& call, const std::string& value) {
  Trace(call.Head() + value + ")");
}

void ExtendedParameter::Trace(const std::string& text) {
  if (console_.DebugTrace()) console_.Line(text);
}

}  // namespace korval::parameters
