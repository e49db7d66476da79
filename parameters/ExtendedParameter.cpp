// SPDX-License-Identifier: MIT
#include "parameters/ExtendedParameter.h"

#include "base/Failure.h"
#include "base/NumberText.h"
#include "parameters/CanFrames.h"
#include "protocol/FieldCodec.h"
#include "protocol/Reply.h"

namespace korval::parameters {
namespace {

enum class DataType : std::int32_t { kReal = 0, kReal8 = 1, kString = 2 };

constexpr std::int32_t kBadCanFrame = 11001;
constexpr std::int32_t kBadString = 11002;
constexpr std::int32_t kBadWord = 11003;
constexpr std::int32_t kBadReal = 11004;
constexpr std::int32_t kBadReal8 = 11005;
constexpr std::int32_t kUnknownLun = 12000;
constexpr std::int32_t kUnknownDataType = 12001;

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

// Does the work of a command; its failure keeps its number and is introduced by the command's words.
template <typename Work>
auto Introduced(const std::string& introduction, Work work) {
  try {
    return work();
  } catch (const base::Failure& failure) {
    throw base::Failure(failure.Number(), introduction + " : Error = " + failure.Description());
  }
}

// Does what follows the work also when the work fails.
template <typename Work, typename After>
void DoAndThen(Work work, After after) {
  try {
    work();
  } catch (const base::Failure&) {
    after();
    throw;
  }
  after();
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

std::int32_t ExtendedParameter::Set(base::ByteView parameters, base::ByteBuffer& reply) {
  const auto session = diagnosis_.Session();  // held: an event inside a wait may release it
  try {
    SetValue(parameters);
    return protocol::kSuccess;
  } catch (const base::Failure& failure) {
    return protocol::ReplyError(console_, reply, failure.Description(), failure.Number());
  }
}

void ExtendedParameter::SetValue(base::ByteView parameters) {
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

void ExtendedParameter::SetReal(const SetCall& call, float value) {
  Introduced(call.Introduction(), [&] {
    DoAndThen([&] { script_.Set(call.file, call.name, value); },
              [&] { TraceSet(call, base::SingleText(value)); });
  });
}

void ExtendedParameter::SetReal8(const SetCall& call, double value) {
  Introduced(call.Introduction(), [&] {
    DoAndThen([&] { WriteByName(call.file, call.name, value); },
              [&] { TraceSet(call, base::DoubleText(value)); });
  });
}

void ExtendedParameter::SetString(const SetCall& call, const std::string& value) {
  TraceSet(call, value);
  if (call.name == "xcanframe") return SendCanFrames(call, value);
  Introduced(call.Introduction(), [&] { SetSpecial(call, value); });
}

void ExtendedParameter::SetSpecial(const SetCall& call, const std::string& value) {
  if (call.name == "pcreboot") {
    power_request_ = protocol::PowerRequest::kReboot;
  } else if (call.name == "pcshutdown") {
    power_request_ = protocol::PowerRequest::kShutdown;
  } else if (call.name == "kwprequest") {
    raw_request_.Send(*call.file, value);
  } else {
    WriteByName(call.file, call.name, value);
  }
}

void ExtendedParameter::SendCanFrames(const SetCall& call, const std::string& value) {
  CanDocument frames;
  for (const std::string_view frame : SplitFrames(value)) {
    Trace("Frame = " + std::string(frame));
    if (!frames.Add(frame)) {
      throw base::Failure(kBadCanFrame,
                          call.Head() + value + ") : Invalid can frame syntax (ex : iiiiiiiidd)");
    }
  }
  const auto trace_document = [&] { Trace(frames.Text()); };
  trace_document();
  Introduced(call.Introduction(), [&] {
    DoAndThen([&] { diagnosis_.RequireSession()->SendFrames(frames.Document()); }, trace_document);
  });
}

void ExtendedParameter::WriteByName(const File& file, const std::string& name, const base::Variant& value) {
  if (!variables_.Write(*file, name, value)) script_.Set(file, name, value);
}

std::int32_t ExtendedParameter::Get(base::ByteView parameters, base::ByteBuffer& reply) {
  const auto session = diagnosis_.Session();
  try {
    GetValue(parameters, reply);
    return protocol::kSuccess;
  } catch (const base::Failure& failure) {
    return protocol::ReplyError(console_, reply, failure.Description(), failure.Number());
  }
}

void ExtendedParameter::GetValue(base::ByteView parameters, base::ByteBuffer& reply) {
  Fields fields(parameters);
  const std::int32_t lun = fields.Word("lun");
  const std::string name = fields.String("name");
  const std::string arguments = std::to_string(lun) + "," + name + ")";
  const auto file = files_.ItemId(lun);
  if (!file) {
    throw base::Failure(kUnknownLun, "extended get parameter(" + arguments + " : Error unknown Emulator LUN");
  }
  AppendTyped(reply, Introduced(kSet + arguments, [&] { return ValueOf(file, name); }));
  Trace("extended get parameter(" + arguments + " ok");
}

base::Variant ExtendedParameter::ValueOf(const File& file, const std::string& name) {
  if (name == "kwprequest") return RawRequest::LastAnswer(*file);
  if (name == "readdtc") return read_dtc_.Read(*file);
  if (name == "dtccode") return file->Dtcs().dtccode();
  if (name == "dtcstatus") return file->Dtcs().dtcstatus();
  if (name == "nextdtc") return file->Dtcs().NextDtc();
  if (auto value = variables_.Read(*file, name)) return *std::move(value);
  return script_.Get(file, name);
}

void ExtendedParameter::TraceSet(const SetCall& call, const std::string& value) {
  Trace(call.Head() + value + ")");
}

void ExtendedParameter::Trace(const std::string& text) {
  if (console_.DebugTrace()) console_.Line(text);
}

}  // namespace korval::parameters
