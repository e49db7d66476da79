// SPDX-License-Identifier: MIT
#include "parameters/GetSetParameter.h"

#include <string>

#include "base/Failure.h"
#include "base/NumberText.h"
#include "protocol/FieldCodec.h"
#include "protocol/NamedField.h"
#include "protocol/Reply.h"

namespace korval::parameters {
namespace {

constexpr char kGetSyntax[] = "get parameter(lun,name)";
constexpr char kSetSyntax[] = "set parameter(lun,name,v)";

std::int32_t ReadLun(const char* syntax, base::ByteView parameters, std::size_t& position) {
  return protocol::ReadNamedField(syntax, "lun", "word",
                                  [&] { return protocol::ReadWord(parameters, position); });
}

std::string ReadName(const char* syntax, base::ByteView parameters, std::size_t& position) {
  return protocol::ReadNamedField(syntax, "name", "string",
                                  [&] { return protocol::ReadString(parameters, position); });
}

}  // namespace

void GetSetParameter::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(
      protocol::CommandCode::kGetParameter,
      [this](base::ByteView parameters, base::ByteBuffer& reply) { return Get(parameters, reply); });
  dispatcher.Attach(protocol::CommandCode::kSetParameter,
                    [this](base::ByteView parameters, base::ByteBuffer&) { return Set(parameters); });
}

base::Task<std::int32_t> GetSetParameter::Set(base::ByteView parameters) {
  std::size_t position = 0;
  const std::int32_t lun = ReadLun(kSetSyntax, parameters, position);
  const std::string name = ReadName(kSetSyntax, parameters, position);
  const float value = protocol::ReadNamedField(kSetSyntax, "v", "real",
                                               [&] { return protocol::ReadReal(parameters, position); });
  const std::string call =
      "set parameter(" + std::to_string(lun) + "," + name + "," + base::SingleText(value) + ")";
  const auto file = files_.ItemId(lun);
  if (!file) throw base::Failure(call + " : Error unknown Emulator LUN");
  console_.Line(call);  // traced even without debugging: a bench wants to see what was written
  try {
    co_await script_.Set(file, name, value);
  } catch (const base::Failure& failure) {
    throw base::Failure(call + " : Error = " + failure.Description());
  }
  co_return protocol::kSuccess;
}

base::Task<std::int32_t> GetSetParameter::Get(base::ByteView parameters, base::ByteBuffer& reply) {
  std::size_t position = 0;
  const std::int32_t lun = ReadLun(kGetSyntax, parameters, position);
  const std::string name = ReadName(kGetSyntax, parameters, position);
  const std::string arguments = "et parameter(" + std::to_string(lun) + "," + name + ")";
  const auto file = files_.ItemId(lun);
  if (!file) throw base::Failure("g" + arguments + " : Error unknown Emulator LUN");
  base::Variant value;
  try {
    value = co_await script_.Get(file, name);
  } catch (const base::Failure& failure) {
    // This one message has always begun with a capital, and test benches compare it.
    throw base::Failure("G" + arguments + " : Error = " + failure.Description());
  }
  std::optional<float> single;
  if (value.IsNumeric()) single = value.ToSingle();
  if (value.TypeOf() == base::Variant::Type::kString && console_.DebugTrace()) {
    console_.Line(name + " is a text: extended get parameter reads it");
  }
  if (!single) throw base::Failure("g" + arguments + " : Invalid data type for answer");
  for (const float real : {*single, *single, *single, 0.0F}) protocol::AppendReal(reply, real);
  if (console_.DebugTrace()) {
    console_.Append("g" + arguments + " ok");
    console_.Line("   value = " + value.ToText());
  }
  co_return protocol::kSuccess;
}

}  // namespace korval::parameters
