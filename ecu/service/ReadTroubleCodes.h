// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>

#include "base/ByteBuffer.h"
#include "base/Task.h"
#include "diag/viator3.h"
#include "ecu/service/TroubleCodeReading.h"

namespace korval::ecu {

/// Sends one request; the exchange says what was wrong.
using Ask = std::function<base::Task<viator3::Exchange>(base::ByteBuffer request)>;

/// Reads all trouble codes and tells the listener. Raises the failure of an exchange, or 2002 for an answer
/// that ends too soon; what came before it was told. The listener outlives the task.
base::Task<void> ReadTroubleCodes(std::unique_ptr<TroubleCodeReading> reading,
                                  viator3::TroubleCodeListener& listener, Ask ask);

}  // namespace korval::ecu
