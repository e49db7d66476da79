// SPDX-License-Identifier: MIT
#include "bench/BenchServer.h"

namespace korval::bench {

BenchServer::BenchServer(const std::string& asap_folder, const std::string& korv_folder)
    : process_({"--headless", "--listen", "127.0.0.1", "--tcp-port", "0", "--diag-port", "SIM", "--power",
                "dry-run", "--settings", home_.Path("settings.ini"), "--install-record",
                home_.Path("record.ini"), "--asap-folder", asap_folder, "--korv-folder", korv_folder},
               home_.Path()),
      port_(process_.WaitForPort()) {}

}  // namespace korval::bench
