// SPDX-License-Identifier: MIT
#include "ecu/kwp2000/Names.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/ByteBuffer.h"

namespace korval::ecu {
namespace {

struct Name {
  std::uint8_t number;
  std::string_view text;
};

constexpr std::array<Name, 34> kServices{{
    {0x10, "startDiagnosticSession"},
    {0x11, "ecuReset"},
    {0x12, "readFreezeFrameData"},
    {0x13, "readDiagnosticTroubleCodes"},
    {0x14, "clearDiagnosticInformation"},
    {0x17, "readStatusOfDiagnosticTroubleCodes"},
    {0x18, "readDiagnosticTroubleCodesByStatus"},
    {0x1A, "readEcuIdentification"},
    {0x20, "stopDiagnosticSession"},
    {0x21, "readDataByLocalIdentifier"},
    {0x22, "readDataByCommonIdentifier"},
    {0x23, "readMemoryByAddress"},
    {0x26, "setDataRates"},
    {0x27, "securityAccess"},
    {0x2C, "dynamicallyDefineLocalIdentifier"},
    {0x2E, "writeDataByCommonIdentifier"},
    {0x2F, "inputOutputControlByCommonIdentifier"},
    {0x30, "inputOutputControlByLocalIdentifier"},
    {0x31, "startRoutineByLocalIdentifier"},
    {0x32, "stopRoutineByLocalIdentifier"},
    {0x33, "requestRoutineResultsByLocalIdentifier"},
    {0x34, "requestDownload"},
    {0x35, "requestUpload"},
    {0x36, "transferData"},
    {0x37, "requestTransferExit"},
    {0x38, "startRoutineByAddress"},
    {0x39, "stopRoutineByAddress"},
    {0x3A, "requestRoutineResultsByAddress"},
    {0x3B, "writeDataByLocalIdentifier"},
    {0x3D, "writeMemoryByAddress"},
    {0x3E, "testerPresent"},
    {0x81, "startCommunication"},
    {0x82, "stopCommunication"},
    {0x83, "accessTimingParameters"},
}};

constexpr std::array<Name, 29> kResponseCodes{{
    {0x10, "generalReject"},
    {0x11, "serviceNotSupported"},
    {0x12, "subFunctionNotSupported-invalidFormat"},
    {0x21, "busy-repeatRequest"},
    {0x22, "conditionsNotCorrectOrRequestSequenceError"},
    {0x23, "routineNotComplete"},
    {0x31, "requestOutOfRange"},
    {0x33, "securityAccessDenied"},
    {0x35, "invalidKey"},
    {0x36, "exceedNumberOfAttempts"},
    {0x37, "requiredTimeDelayNotExpired"},
    {0x40, "downloadNotAccepted"},
    {0x41, "improperDownloadType"},
    {0x42, "cantDownloadToSpecifiedAddress"},
    {0x43, "cantDownloadNumberOfBytesRequested"},
    {0x50, "uploadNotAccepted"},
    {0x51, "improperUploadType"},
    {0x52, "cantUploadFromSpecifiedAddress"},
    {0x53, "cantUploadNumberOfBytesRequested"},
    {0x71, "transferSuspended"},
    {0x72, "transferAborted"},
    {0x74, "illegalAddressInBlockTransfer"},
    {0x75, "illegalByteCountInBlockTransfer"},
    {0x76, "illegalBlockTransferType"},
    {0x77, "blockTransferDataChecksumError"},
    {0x78, "requestCorrectlyReceived-ResponsePending"},
    {0x79, "incorrectByteCountDuringBlockTransfer"},
    {0x80, "serviceNotSupportedInActiveDiagnosticSession"},
    {0xFF, "reserved"},
}};

template <std::size_t kCount>
std::string NameOf(const std::array<Name, kCount>& names, std::uint8_t number, std::string_view other) {
  const auto* const found =
      std::find_if(names.begin(), names.end(), [&](const Name& name) { return name.number == number; });
  return std::string(found == names.end() ? other : found->text);
}

std::string WithNumber(const std::string& name, std::uint8_t number) {
  return name + " (" + base::HexText(base::ByteView(&number, 1)) + ")";
}

}  // namespace

std::string ServiceName(std::uint8_t service) { return NameOf(kServices, service, "service"); }

std::string ResponseCodeName(std::uint8_t code) {
  return NameOf(kResponseCodes, code, code >= 0x80 ? "manufacturerSpecific" : "reserved");
}

std::string NegativeAnswerText(std::uint8_t service, std::uint8_t code) {
  return WithNumber(ServiceName(service), service) + ": " + WithNumber(ResponseCodeName(code), code);
}

}  // namespace korval::ecu
