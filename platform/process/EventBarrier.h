// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <utility>

#include <QEvent>
#include <QObject>

namespace korval::platform {

/// What is thrown inside an event ends with the event, never the program: Qt's delivery carries no exception.
class EventBarrier {
 public:
  /// Takes a sentence that says what was thrown, and in which event.
  using Report = std::function<void(const std::string&)>;

  /// Standard error takes the reports until somebody else does; an empty one puts that back.
  static void SetReport(Report report);

  /// Runs what happens at an event; `where` names the event.
  template <typename Event>
  static void Run(const char* where, Event&& event) {
    try {
      std::forward<Event>(event)();
    } catch (const std::exception& thrown) {
      Caught(where, thrown.what());
    } catch (...) {
      Caught(where, "no exception of the standard library");
    }
  }

 private:
  static void Caught(const char* where, const char* what);
};

/// An application of Qt with the barrier around each of its events.
template <typename QtApplication>
class GuardedApplication : public QtApplication {
 public:
  using QtApplication::QtApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    // The receiver may be gone when something was thrown.
    const char* const where = receiver ? receiver->metaObject()->className() : "the application";
    bool recognised = false;
    EventBarrier::Run(where, [&] { recognised = QtApplication::notify(receiver, event); });
    return recognised;
  }
};

}  // namespace korval::platform
