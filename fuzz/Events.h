// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/FuzzServer.h"
#include "fuzz/Input.h"

namespace korval::fuzz {

/// Plays a script of outside events to the server. Each event is a byte for its kind, whose bit 80 puts
/// the event off by the milliseconds in the following byte, and then:
///   00  a TCP arrival                     byte: length, bytes
///   01  a valid frame over TCP            byte: index into the command codes, byte: length, parameters
///   02  bytes over the serial line        byte: length, bytes
///   03  a valid frame over the serial line, as 01
///   04  a client connects
///   05  the client is lost
///   06  a session up to "file selected"   byte: section
///   07  a line event of the serial port   byte: event
///   08  time passes                       byte: milliseconds, times 10
///   09  reset
///   0A  the server ends
/// Other kinds are taken modulo 11.
void PlayEvents(FuzzServer& server, Input& input);

}  // namespace korval::fuzz
