// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace korval::tests {

/// A TCP port of this computer that nobody listens on, for a server that cannot tell which one it took.
int FreePort();
/// Waits until `done` holds; what takes longer than a minute raises std::runtime_error, which fails the test.
void WaitUntil(const std::function<bool()>& done);
/// Waits until a connection to the port succeeds.
void WaitForListener(int port);

}  // namespace korval::tests
