// SPDX-License-Identifier: MIT
#include <QtGlobal>

// In each part of the program: the program and its parts share classes, so they are of one version.
extern "C" Q_DECL_EXPORT const char* KorvalPartVersion() { return KORVAL_VERSION; }
