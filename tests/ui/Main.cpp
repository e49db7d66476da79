// SPDX-License-Identifier: MIT
// The widgets run on Qt's offscreen platform, with settings of their own and none of the desktop's dialogs.
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  const QTemporaryDir settings;
  qputenv("XDG_CONFIG_HOME", settings.path().toLocal8Bit());
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  const QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
