// SPDX-License-Identifier: MIT
#include "apps/asap3/Watch.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <string>

#include <QEventLoop>
#include <QTimer>

#include "apps/asap3/ValueTable.h"
#include "base/Failure.h"
#include "client/ClientErrors.h"
#include "platform/process/StopSignals.h"

namespace korval::apps {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Waits until a moment, or until somebody stops it for good.
class Pause {
 public:
  Pause() {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &loop_, &QEventLoop::quit);
  }
  void Stop() {
    stopped_ = true;
    loop_.quit();
  }
  bool IsStopped() const { return stopped_; }
  void Until(Clock::time_point moment) {
    if (stopped_) return;
    timer_.start(std::max(std::chrono::ceil<milliseconds>(moment - Clock::now()), milliseconds(0)));
    loop_.exec();
  }

 private:
  QEventLoop loop_;
  QTimer timer_;
  bool stopped_ = false;
};

class CsvFile {
 public:
  explicit CsvFile(const std::string& path) : path_(path) {
    if (path.empty()) return;
    file_.open(path, std::ios::binary | std::ios::trunc);
    Check();
  }
  void Write(const std::string& line) {
    if (path_.empty()) return;
    file_ << line << "\r\n" << std::flush;
    Check();
  }

 private:
  void Check() const {
    if (!file_)
      throw base::Failure("The file " + path_ + " cannot be written: check the folder and the space");
  }

  std::string path_;
  std::ofstream file_;
};

ValueTable::Values Read(client::Asap3Client& client, std::size_t count) {
  ValueTable::Values values = client.OnlineValues();
  if (values.size() == count) return values;
  throw client::LinkError("The server answered " + std::to_string(values.size()) + " values, not the " +
                          std::to_string(count) + " chosen: an earlier session was not ended; try again");
}

}  // namespace

void Watch(client::Asap3Client& client, std::uint16_t lun, const ClientOptions& options) {
  Pause pause;
  const platform::StopSignals stop_signals([&pause] { pause.Stop(); });
  const ValueTable table(options.names);
  CsvFile csv(options.csv_file);
  const auto scan_time = std::min<milliseconds::rep>(options.interval.count(), 0xFFFF);
  client.SetAcquisition(lun, static_cast<std::uint16_t>(scan_time), options.names);
  csv.Write(table.CsvHeader());
  if (!options.json) std::cout << table.TextHeader() << std::endl;

  const Clock::time_point start = Clock::now();
  Clock::time_point next = start;
  for (std::uint32_t done = 0; !pause.IsStopped();) {
    const ValueTable::Values values = Read(client, options.names.size());
    const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    std::cout << (options.json ? table.JsonRow(time, values) : table.TextRow(time, values)) << std::endl;
    csv.Write(table.CsvRow(time, values));
    if (++done == options.count) break;
    next = std::max(next + options.interval, Clock::now());  // a slow answer is not made up for by a burst
    pause.Until(next);
  }
}

}  // namespace korval::apps
