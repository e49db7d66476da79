// SPDX-License-Identifier: MIT
#pragma once

#include <QTranslator>

namespace korval::apps {

/// The texts of the window, and of the dialogs that Qt brings along, in the language of the person's desktop;
/// in English where there is no translation. Needs a QApplication, and goes before it.
class Translations {
 public:
  Translations();

 private:
  QTranslator own_;
  QTranslator qt_;
};

}  // namespace korval::apps
