// SPDX-License-Identifier: MIT
#include "platform/process/EventBarrier.h"

#include <iostream>

namespace korval::platform {
namespace {

EventBarrier::Report& CurrentReport() {
  static EventBarrier::Report report;
  return report;
}

}  // namespace

void EventBarrier::SetReport(Report report) { CurrentReport() = std::move(report); }

void EventBarrier::Caught(const char* where, const char* what) {
  try {
    const std::string sentence = std::string("Internal error in an event of ") + where + ": " + what +
                                 "; what the event began is dropped, everything else goes on";
    const Report report = CurrentReport();
    if (report) return report(sentence);
    std::cerr << sentence << std::endl;
  } catch (...) {
    // Nobody is left who could be told.
  }
}

}  // namespace korval::platform
