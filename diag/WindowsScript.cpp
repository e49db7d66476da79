// SPDX-License-Identifier: MIT
#include "diag/WindowsScript.h"

#include <utility>

#include "base/Failure.h"

namespace korval::diag {
namespace {

base::Failure Renumbered(std::int32_t number, const std::string& what, const base::Failure& failure) {
  return {number, what + "  Error : " + failure.Description()};
}

// Does a step; a failure of it becomes one with the given number, introduced by `what`.
template <typename Step>
auto Renumbered(std::int32_t number, const std::string& what, Step step) {
  try {
    return step();
  } catch (const base::Failure& failure) {
    throw Renumbered(number, what, failure);
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

base::Task<void> WindowsScript::Set(std::shared_ptr<ScriptFile> file, std::string name,
                                    base::Variant value) const {
  const auto session = diagnosis_.Session();  // held: it may be released in the wait
  const auto object = InstanceOf(file);
  try {
    co_await object->Set(name, std::move(value));
  } catch (const base::Failure& failure) {
    throw Renumbered(kAccessFailed, "obj." + name, failure);
  }
}

base::Task<base::Variant> WindowsScript::Get(std::shared_ptr<ScriptFile> file, std::string name) const {
  const auto session = diagnosis_.Session();
  const auto object = InstanceOf(file);
  try {
    co_return co_await object->Get(name);
  } catch (const base::Failure& failure) {
    throw Renumbered(kAccessFailed, "obj." + name, failure);
  }
}

}  // namespace korval::diag
