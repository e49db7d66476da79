// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include <QSocketNotifier>

#include "base/ByteBuffer.h"

namespace korval::apps {

/// The ECU's end of a serial line: a pseudo terminal whose other end the tester opens by a path. Testers may
/// come and go.
class PtyLine {
 public:
  using OnBytes = std::function<void(base::ByteView)>;

  /// Links the tester's end at `path`, in place of a link that is there. Raises Failure when there is no
  /// pseudo terminal, or when the path is taken by something else or cannot be written.
  PtyLine(std::string path, OnBytes on_bytes);
  /// Takes the link away.
  ~PtyLine();
  PtyLine(const PtyLine&) = delete;
  PtyLine& operator=(const PtyLine&) = delete;

  /// Bytes that the tester does not read in time are lost, as on a wire.
  void Write(base::ByteView bytes);

 private:
  class Descriptor {
   public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return number_; }

   private:
    int number_;
  };

  void Read();
  void Link(const std::string& device) const;

  std::string path_;
  OnBytes on_bytes_;
  Descriptor near_;
  std::string device_;
  Descriptor far_;  // held open, so that the line stays when a tester leaves
  QSocketNotifier arrival_;
};

}  // namespace korval::apps
