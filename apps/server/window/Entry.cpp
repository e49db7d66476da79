// SPDX-License-Identifier: MIT
#include <QtGlobal>

#include "window/RunWindow.h"

// What the program calls in the library of the window.
extern "C" Q_DECL_EXPORT int KorvalRunWindow(int argc, char** argv,
                                             const korval::apps::ServerOptions& options) {
  return korval::apps::RunWindow(argc, argv, options);
}
