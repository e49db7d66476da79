// SPDX-License-Identifier: MIT
#pragma once

#include <QCanBusDevice>
#include <QCanBusFrame>
#include <QString>
#include <QVector>

namespace korval::platform {

/// A CAN adapter that does what the test says.
class FakeCanDevice : public QCanBusDevice {
 public:
  FakeCanDevice() { setState(ConnectedState); }

  bool writeFrame(const QCanBusFrame& frame) override {
    if (refusal != 0) {
      setError(qt_error_string(refusal), WriteError);
      return false;
    }
    written.append(frame);
    return true;
  }
  QString interpretErrorFrame(const QCanBusFrame& /*frame*/) override { return {}; }

  void Confirm(qint64 frames) { emit framesWritten(frames); }
  void Receive(const QVector<QCanBusFrame>& frames) { enqueueReceivedFrames(frames); }
  void ReceiveError(QCanBusFrame::FrameErrors errors) {
    QCanBusFrame frame(QCanBusFrame::ErrorFrame);
    frame.setError(errors);
    Receive({frame});
  }
  void Fail(CanBusError error) { setError(QStringLiteral("network is down"), error); }
  void ChangeState(CanBusDeviceState state) { setState(state); }

  int refusal = 0;  ///< error number of the system; 0: frames are written
  QVector<QCanBusFrame> written;

 protected:
  bool open() override { return true; }
  void close() override { setState(UnconnectedState); }
};

}  // namespace korval::platform
