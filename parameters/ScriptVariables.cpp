// SPDX-License-Identifier: MIT
#include "parameters/ScriptVariables.h"

#include <array>
#include <string_view>
#include <vector>

#include "base/AnsiText.h"
#include "base/Failure.h"
#include "base/NumberText.h"
#include "parameters/EcuFunction.h"

namespace korval::parameters {
namespace {

using base::Variant;
using DataItem = std::shared_ptr<viator3::DataItem>;
using Request = std::shared_ptr<viator3::Request>;

[[noreturn]] void Fail(const std::string& description) { throw base::Failure(kScriptError, description); }

// One use of a script variable.
struct Call {
  const diag::DiagnosisObject& diagnosis;
  const model::KorvAsapFile& file;
  std::string argument;

  std::shared_ptr<viator3::Ecu> Function() const { return EcuFunction(diagnosis, file); }
};

struct Arguments {
  std::string request;
  std::string second;
};

Variant Count(std::size_t size) { return static_cast<std::int32_t>(size); }

// Position in the collection, counted from 0; none when the index is outside.
std::optional<std::size_t> Position(std::int32_t index, std::size_t size) {
  if (index < 1 || static_cast<std::size_t>(index) > size) return std::nullopt;
  return static_cast<std::size_t>(index) - 1;
}

// "Syntax" stands for an index that cannot be read, "Syntaxe" for one out of range.
std::size_t IndexArgument(const std::string& argument, std::size_t size, const std::string& what) {
  const auto index = base::ReadInteger(argument);
  if (!index) Fail("Syntax error : Bad " + what + " number " + argument);
  const auto position = Position(*index, size);
  if (!position) Fail("Syntaxe error : Bad " + what + " number " + argument);
  return *position;
}

Request RequestNamed(viator3::Ecu& ecu, const std::string& name) {
  for (const auto& request : ecu.RequestList()) {
    if (request->Name() == name) return request;
  }
  Fail("Syntax error : Bad request name " + name);
}

Arguments TwoArguments(const Call& call) {
  const std::string& text = call.argument;
  const std::size_t separator = text.find(';');
  if (separator == std::string::npos || text.find(';', separator + 1) != std::string::npos) {
    Fail("Syntax error : Bad number of parameters (2 needed) " + text);
  }
  return {text.substr(0, separator), text.substr(separator + 1)};
}

DataItem NamedItem(const Call& call) {
  const Arguments arguments = TwoArguments(call);
  const Request request = RequestNamed(*call.Function(), arguments.request);
  for (const auto& item : request->Data()) {
    if (item->Name() == arguments.second) return item;
  }
  Fail("Syntax error : Bad data name " + arguments.second);
}

// The two kinds of items differ in the word for an index out of range.
Variant ItemNameAt(const Call& call, const viator3::Request::Items& (viator3::Request::*items)() const,
                   const std::string& what, const std::string& out_of_range) {
  const Arguments arguments = TwoArguments(call);
  const Request request = RequestNamed(*call.Function(), arguments.request);
  const auto index = base::ReadInteger(arguments.second);
  if (!index) Fail("Syntax error : Bad " + what + " number ");
  const viator3::Request::Items& list = (*request.*items)();
  const auto position = Position(*index, list.size());
  if (!position) Fail(out_of_range + " error : Bad " + what + " number " + std::to_string(*index));
  return list[*position]->Name();
}

Variant ReferenceDataCount(const Call& call) { return Count(call.Function()->ReferenceData().size()); }

Variant ReferenceDataName(const Call& call) {
  const auto ecu = call.Function();
  const std::vector<std::string>& names = ecu->ReferenceData();
  return names[IndexArgument(call.argument, names.size(), "reference data")];
}

Variant RequestCount(const Call& call) { return Count(call.Function()->RequestList().size()); }

Variant RequestName(const Call& call) {
  const auto ecu = call.Function();
  const viator3::Ecu::Requests& requests = ecu->RequestList();
  return requests[IndexArgument(call.argument, requests.size(), "request")]->Name();
}

Variant DataCount(const Call& call) {
  return Count(RequestNamed(*call.Function(), call.argument)->Data().size());
}

Variant ParameterCount(const Call& call) {
  return Count(RequestNamed(*call.Function(), call.argument)->Parameters().size());
}

Variant DataName(const Call& call) { return ItemNameAt(call, &viator3::Request::Data, "data", "Syntaxe"); }

Variant ParameterName(const Call& call) {
  return ItemNameAt(call, &viator3::Request::Parameters, "parameter", "Syntax");
}

Variant ItemText(const Call& call) {
  const DataItem item = NamedItem(call);
  if (item->Value().IsEmpty()) {
    const std::string request = TwoArguments(call).request;
    Fail(item->Name() + " has no text yet: execute its request first, qorexecreq(" + request +
         "); when that was done, its answer does not hold the item");
  }
  return item->Text();
}

Variant ItemValue(const Call& call) {
  Variant value = NamedItem(call)->Value();
  if (value.IsEmpty()) Fail("data not available or invalid");
  return value;
}

Variant ItemUnit(const Call& call) { return NamedItem(call)->Unit(); }

// The two that talk to the ECU are answered by the number of their failure.

base::Task<Variant> ExecuteRequest(Call call) {
  const auto ecu = call.Function();  // held through the wait, as the request is
  const Request request = RequestNamed(*ecu, call.argument);
  try {
    co_await request->Execute();
    co_return std::int32_t{0};
  } catch (const base::Failure& failure) {
    co_return failure.Number();
  }
}

base::Task<Variant> InitialiseFunction(Call call) {
  try {
    const auto ecu = call.Function();
    co_await ecu->Initialise();
    co_return std::int32_t{0};
  } catch (const base::Failure& failure) {
    co_return failure.Number();
  }
}

void WriteText(viator3::DataItem& item, const Variant& value) { item.SetText(value.ToText()); }

void WriteValue(viator3::DataItem& item, const Variant& value) { item.SetValue(value); }

struct Variable {
  std::string_view name;  // one that ends with "(" takes arguments
  Variant (*read)(const Call&) = nullptr;
  void (*write)(viator3::DataItem&, const Variant&) = nullptr;
  base::Task<Variant> (*execute)(Call) = nullptr;
};

constexpr std::array<Variable, 13> kVariables{{
    {"qornbrefdata", ReferenceDataCount},
    {"qorrefdata(", ReferenceDataName},
    {"qornbrequests", RequestCount},
    {"qorrequest(", RequestName},
    {"qornbdata(", DataCount},
    {"qornbparam(", ParameterCount},
    {"qordata(", DataName},
    {"qorparam(", ParameterName},
    {"qortext(", ItemText, WriteText},
    {"qorvalue(", ItemValue, WriteValue},
    {"qorunit(", ItemUnit},
    {"qorexecreq(", nullptr, nullptr, ExecuteRequest},
    {"qorinit", nullptr, nullptr, InitialiseFunction},
}};

const Variable* FindVariable(const std::string& name) {
  for (const Variable& variable : kVariables) {
    if (variable.name.back() == '(' ? name.starts_with(variable.name) : name == variable.name) {
      return &variable;
    }
  }
  return nullptr;
}

// What stands between the bracket and the last character, whatever that is.
std::string ArgumentOf(const Variable& variable, const std::string& name) {
  if (name.size() <= variable.name.size()) return {};
  std::string argument = name.substr(variable.name.size());
  std::size_t last = 0;
  for (std::size_t next = 0; next < argument.size();) {
    last = next;
    base::NextCharacter(argument, next);
  }
  argument.resize(last);
  return argument;
}

}  // namespace

bool ScriptVariables::IsVariable(const std::string& name) { return FindVariable(name) != nullptr; }

base::Task<Variant> ScriptVariables::Read(std::shared_ptr<model::KorvAsapFile> file, std::string name) const {
  const Variable& variable = *FindVariable(name);
  const Call call{diagnosis_, *file, ArgumentOf(variable, name)};
  if (variable.execute) co_return co_await variable.execute(call);
  co_return variable.read(call);
}

bool ScriptVariables::Write(const model::KorvAsapFile& file, const std::string& name,
                            const Variant& value) const {
  const Variable* variable = FindVariable(name);
  if (variable == nullptr || variable->write == nullptr) return false;
  const DataItem item = NamedItem(Call{diagnosis_, file, ArgumentOf(*variable, name)});
  try {
    variable->write(*item, value);
  } catch (const base::Failure& failure) {
    if (failure.Number() == kReadOnly) Fail("data " + item->Name() + " is readonly");
    if (failure.Number() == kValueRefused) Fail("data not available or invalid");
    throw;
  }
  return true;
}

}  // namespace korval::parameters
