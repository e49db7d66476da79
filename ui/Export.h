// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

// Marks what a host application uses of the shared library. The library's own targets and those that take
// the classes in statically define KORVAL_UI_BUILD.
#if defined(KORVAL_UI_BUILD)
#define KORVAL_UI_EXPORT Q_DECL_EXPORT
#else
#define KORVAL_UI_EXPORT Q_DECL_IMPORT
#endif
