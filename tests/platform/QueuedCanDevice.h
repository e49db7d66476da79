// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <string>

#include <QCanBusDevice>
#include <QCanBusFrame>
#include <QTimer>

#include "platform/QtEventLoop.h"

namespace korval::platform {

/// One end of a bus of 500 kbit/s with two nodes, as Qt has a network interface of Linux: what the
/// interface's queue of ten frames takes is "written" at once, and a frame more is refused.
class QueuedCanDevice : public QCanBusDevice {
 public:
  static constexpr qsizetype kQueue = 10;
  /// 8 bytes without stuff bits, and the gap of 3 bits.
  static constexpr std::chrono::microseconds kFrameTime{222};

  struct Wire {
    base::TimePoint free_at{};
    base::Duration used{};
    std::deque<QueuedCanDevice*> nodes;
  };

  explicit QueuedCanDevice(Wire& wire) : wire_(wire) {
    setState(ConnectedState);
    wire_.nodes.push_back(this);
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { Drain(); });
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.start(1);
  }
  ~QueuedCanDevice() override { std::erase(wire_.nodes, this); }
  QueuedCanDevice(const QueuedCanDevice&) = delete;
  QueuedCanDevice& operator=(const QueuedCanDevice&) = delete;

  bool writeFrame(const QCanBusFrame& frame) override {
    Drain();
    if (queue_.size() >= kQueue) {
      setError(QStringLiteral("No buffer space available"), WriteError);
      return false;
    }
    wire_.free_at = std::max(wire_.free_at, loop_.Now()) + kFrameTime;
    wire_.used += kFrameTime;
    queue_.append({frame, wire_.free_at});
    emit framesWritten(1);
    return true;
  }
  QString interpretErrorFrame(const QCanBusFrame& /*frame*/) override { return {}; }

 protected:
  bool open() override { return true; }
  void close() override { setState(UnconnectedState); }

 private:
  struct Queued {
    QCanBusFrame frame;
    base::TimePoint complete_at;
  };

  void Drain() {
    const base::TimePoint now = loop_.Now();
    while (!queue_.isEmpty() && queue_.first().complete_at <= now) {
      const QCanBusFrame frame = queue_.takeFirst().frame;
      for (QueuedCanDevice* node : wire_.nodes) {
        if (node != this) node->enqueueReceivedFrames({frame});
      }
    }
  }

  Wire& wire_;
  QtEventLoop loop_;
  QVector<Queued> queue_;
  QTimer timer_;
};

}  // namespace korval::platform
