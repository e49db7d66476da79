// SPDX-License-Identifier: MIT
#include "RunWithWindow.h"

#include "PartOfProgram.h"
#include "base/Failure.h"

namespace korval::apps {
namespace {

using Entry = int(int argc, char** argv, const ServerOptions& options);

Entry* FindEntry() {
  try {
    return PartOfProgram("korval-asap-server-window").Find<Entry>("KorvalRunWindow");
  } catch (const base::Failure& failure) {
    throw base::Failure("no window can be opened (" + failure.Description() +
                        "): install the whole program again, or start it with --headless");
  }
}

}  // namespace

int RunWithWindow(int argc, char** argv, const ServerOptions& options) {
  return FindEntry()(argc, argv, options);
}

}  // namespace korval::apps
