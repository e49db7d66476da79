// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include <QByteArray>

namespace korval::tests {

/// A host application's form, as Qt Designer saves it, with both widgets on it.
inline const QByteArray kForm = R"(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0">
 <class>Form</class>
 <widget class="QWidget" name="Form">
  <layout class="QVBoxLayout" name="rows">
   <item><widget class="korval::ui::KorvAsapServer" name="server"/></item>
   <item><widget class="korval::ui::ConfigComPort" name="panel"/></item>
  </layout>
 </widget>
 <customwidgets>
  <customwidget>
   <class>korval::ui::KorvAsapServer</class><extends>QWidget</extends><header>ui/KorvAsapServer.h</header>
  </customwidget>
  <customwidget>
   <class>korval::ui::ConfigComPort</class><extends>QWidget</extends><header>ui/ConfigComPort.h</header>
  </customwidget>
 </customwidgets>
</ui>)";

/// Stores a TCP port that is free as the server's, and gives it.
std::uint16_t StoreFreePort();
/// Whether a server listens there on this machine.
bool IsOpen(std::uint16_t port);

}  // namespace korval::tests
