// SPDX-License-Identifier: MIT
#include "model/SetAcquisition.h"

#include <string_view>

#include "base/Failure.h"
#include "protocol/FieldCodec.h"
#include "protocol/NamedField.h"
#include "protocol/Reply.h"

namespace korval::model {
namespace {

constexpr char kCommand[] = "set acq para";
constexpr std::string_view kDirectPrefix = "qor(";

[[noreturn]] void RaiseUnknownData(const std::string& name) {
  // The text has never had a closing bracket, and test benches compare it.
  throw base::Failure(kUnknownData, "set acq para : Error unknown data (" + name);
}

// A name in brackets is the data item's own, whatever the description file says.
bool IsDirect(const std::string& name) {
  return name.size() > kDirectPrefix.size() && name.starts_with(kDirectPrefix) && name.ends_with(')');
}

}  // namespace

SetAcquisition::SetAcquisition(host::TraceConsole& console, const diag::DiagnosisObject& diagnosis,
                               const KorvAsapFiles& files, KorvAsapValues& values, Acquisition& acquisition,
                               host::ListView& data_view)
    : console_(console),
      diagnosis_(diagnosis),
      files_(files),
      values_(values),
      acquisition_(acquisition),
      data_view_(data_view) {}

void SetAcquisition::AttachTo(protocol::Dispatcher& dispatcher) {
  dispatcher.Attach(
      protocol::CommandCode::kSetAcquisition,
      [this](base::ByteView parameters, base::ByteBuffer& reply) { return Handle(parameters, reply); });
}

std::int32_t SetAcquisition::Handle(base::ByteView parameters, base::ByteBuffer& reply) {
  std::size_t position = 0;
  const auto read_word = [&](const char* field) {
    return protocol::ReadNamedField(kCommand, field, "word",
                                    [&] { return protocol::ReadWord(parameters, position); });
  };
  const std::int32_t lun = read_word("lun");
  const std::int32_t scan_rate = read_word("scan rate");
  const std::int32_t count = read_word("n");
  const std::string lun_text = std::string(kCommand) + "(" + std::to_string(lun);
  if (count == 0) {
    // The blank before the comma belongs to this form only.
    if (console_.DebugTrace()) console_.Line(lun_text + " ," + std::to_string(scan_rate) + ",[])");
    return protocol::kSuccess;
  }
  const std::string head = lun_text + "," + std::to_string(scan_rate) + ",";
  const auto file = files_.ItemId(lun);
  if (!file) {
    const std::string message = head + "...) : Error unknown Emulator LUN";
    console_.Line(message);
    protocol::AppendErrorRecord(reply, message, kOwnFailure);
    return protocol::kError;
  }
  const std::int32_t status = Choose(*file, count, parameters.subspan(position), head, reply);
  if (status == protocol::kSuccess) RebuildDataView();
  return status;
}

std::int32_t SetAcquisition::Choose(const KorvAsapFile& file, std::int32_t count, base::ByteView names,
                                    const std::string& head, base::ByteBuffer& reply) {
  std::size_t position = 0;
  std::string traced;
  const auto trace_names = [&] {
    if (console_.DebugTrace()) console_.Line(head + "[" + traced + "])");
  };
  try {
    for (std::int32_t i = 0; i < count; ++i) {
      const std::string name = protocol::ReadNamedField(
          kCommand, "name", "string", [&] { return protocol::ReadString(names, position); });
      if (i > 0) traced += ",";
      traced += name;
      traced += ChooseValue(file, name);
    }
  } catch (const base::Failure& failure) {
    trace_names();
    return protocol::ReplyError(console_, reply, failure.Description(), failure.Number());
  }
  trace_names();
  return protocol::kSuccess;
}

// Returns what the trace adds to the name: the mark of a name that is in the list already.
std::string SetAcquisition::ChooseValue(const KorvAsapFile& file, const std::string& name) {
  const Choice choice = Understand(file, name);
  const auto ecu = diagnosis_.RequireSession()->EcuByFunction(file.KorvFunction());
  const auto item = ecu->FindAnswerItem(choice.korv_name);
  if (!item) RaiseUnknownData(name);
  acquisition_.Start(ecu);
  const bool is_new = acquisition_.Add(choice.value_name, *ecu, item);
  if (is_new || values_.Count() < KorvAsapValues::kMostRepeats) {
    values_.Add(choice.value_name, file.Id(), choice.korv_name);
  }
  return is_new ? "" : choice.duplicate_mark;
}

SetAcquisition::Choice SetAcquisition::Understand(const KorvAsapFile& file, const std::string& name) {
  if (IsDirect(name)) {
    const std::string inner = name.substr(kDirectPrefix.size(), name.size() - kDirectPrefix.size() - 1);
    return {inner, inner, " [duplicate data] "};
  }
  if (!file.IsDataExist(name)) RaiseUnknownData(name);
  return {name, file.KorvDataName(name), " [duplicate data]"};
}

// The list grows with every name that is sent, and is looked at far less often.
void SetAcquisition::RebuildDataView() {
  data_view_.RebuildWhenShown([watch = std::weak_ptr(self_)] {
    if (const auto self = watch.lock()) (*self)->AddRows();
  });
}

void SetAcquisition::AddRows() {
  for (const auto& value : values_) {
    data_view_.AddRow({value->valueName, std::to_string(value->lunId), "0", value->korvName});
  }
}

}  // namespace korval::model
