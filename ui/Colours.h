// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QPalette>

namespace korval::ui {

inline bool IsDark(const QPalette& palette) { return palette.color(QPalette::Base).lightness() < 128; }

/// The terminal's blue: pure blue, on a dark background one that can be read.
inline QColor Blue(const QPalette& palette) {
  return IsDark(palette) ? QColor(0x7A, 0xB0, 0xFF) : QColor(0, 0, 0xFF);
}

/// The red of something that is missing.
inline QColor Red(const QPalette& palette) {
  return IsDark(palette) ? QColor(0xFF, 0x7B, 0x72) : QColor(0xFF, 0, 0);
}

/// The green of an open line.
inline QColor Green(const QPalette& palette) {
  return IsDark(palette) ? QColor(0x56, 0xD3, 0x64) : QColor(0x1A, 0x7F, 0x37);
}

}  // namespace korval::ui
