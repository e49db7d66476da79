// SPDX-License-Identifier: MIT
#include "window/RunWindow.h"

#include <optional>
#include <utility>

#include <QApplication>

#include "platform/process/EventBarrier.h"
#include "ui/Pictures.h"
#include "window/DisplayGuard.h"
#include "window/Translations.h"
#include "window/WindowedServer.h"

namespace korval::apps {

int RunWindow(int argc, char** argv, const ServerOptions& options) {
  std::optional<DisplayGuard> guard(std::in_place);
  const platform::GuardedApplication<QApplication> application(argc, argv);
  guard.reset();
  const Translations translations;
  QApplication::setWindowIcon(ui::PictureIcon(ui::Picture::kServer));
  QGuiApplication::setDesktopFileName("korval-asap-server");
  return WindowedServer(options).Run();
}

}  // namespace korval::apps
