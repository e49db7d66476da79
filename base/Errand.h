// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace korval::base {

/// What is done for somebody who may go away before it is done: a command of a client, from the beginning of
/// this object's life to its end. Whoever does it asks between its steps whether it is still wanted, and
/// every wait asks too, so that one which is called off ends with the step that is under way. Errands nest as
/// scopes do: what must not be cut short has one of its own. What is done for nobody in particular is always
/// wanted.
class Errand {
 public:
  Errand() : outer_(std::exchange(current_, this)) {}
  ~Errand() { current_ = outer_; }
  Errand(const Errand&) = delete;
  Errand& operator=(const Errand&) = delete;

  void CallOff() { is_wanted_ = false; }

  static bool IsWanted() { return IsWanted(current_); }
  /// Raises Failure when what is being done was called off.
  static void RequireWanted() { RequireWanted(current_); }

  /// Held by a wait of the event loop: the events that it delivers are no part of the errand that waits.
  class Wait {
   public:
    Wait() : waiting_(std::exchange(current_, nullptr)) {}
    ~Wait() { current_ = waiting_; }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

    /// Raises Failure when the errand that waits was called off.
    void RequireWanted() const { Errand::RequireWanted(waiting_); }

   private:
    Errand* waiting_;
  };

 private:
  static bool IsWanted(const Errand* errand) { return !errand || errand->is_wanted_; }
  static void RequireWanted(const Errand* errand);

  static Errand* current_;  // there is one thread

  Errand* outer_;
  bool is_wanted_ = true;
};

}  // namespace korval::base
