// SPDX-License-Identifier: MIT
#include "diag/WindowsScript.h"

#include <utility>

#include "base/Failure.h"

namespace korval::diag {
namespace {

constexpr std::int32_t kCreateObjectFailed = 10010;
constexpr std::int32_t kSetProtocolFailed = 10011;
constexpr std::int32_t kAccessFailed = 10012;

// Does a step; a failure of it becomes one with the given number, introduced by `what`.
template <typename Step>
auto Renumbered(std::int32_t number, const std::string& what, Step step) {
  try {
    return step();
  } catch (const base::Failure& failure) {
    throw base::Failure(number, what + "  Error : " + failure.Description());
  }
}

}  // namespace

std::shared_ptr<viator3::InstanceObject> WindowsScript::InstanceOf(
    const std::shared_ptr<ScriptFile>& file) const {
  if (auto object = file->WshObject()) return object;
  const std::string prog_id = "qor4inst." + file->BinaryFile();
  auto object = Renumbered(kCreateObjectFailed, "CreateObject : " + prog_id,
                           [&] { return diagnosis_.RequireSession()->CreateInstance(prog_id); });
  Renumbered(kSetProtocolFailed, "Set obj.Protocol",
             [&] { object->SetProtocol(diagnosis_.RequireSession()->EcuByFunction(file->KorvFunction())); });
  // The file owns the object, so the object must not own the file.
  object->SetNameResolver([weak = std::weak_ptr<ScriptFile>(file)](const std::string& name) {
    const auto owner = weak.lock();
    return owner ? owner->KorvDataName(name) : std::string();
  });
  file->SetWshObject(object);
  return object;
}

void WindowsScript::Set(const std::shared_ptr<ScriptFile>& file, const std::string& name,
                        const base::Variant& value) const {
  const auto session = diagnosis_.Session();  // held: an event inside the wait may release it
  const auto object = InstanceOf(file);
  Renumbered(kAccessFailed, "obj." + name, [&] { object->Set(name, value); });
}

base::Variant WindowsScript::Get(const std::shared_ptr<ScriptFile>& file, const std::string& name) const {
  const auto session = diagnosis_.Session();
  const auto object = InstanceOf(file);
  return Renumbered(kAccessFailed, "obj." + name, [&] { return object->Get(name); });
}

}  // namespace korval::diag
