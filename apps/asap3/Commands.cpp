// SPDX-License-Identifier: MIT
#include "apps/asap3/Commands.h"

#include <iostream>
#include <string>
#include <string_view>
#include <variant>

#include "apps/asap3/JsonLine.h"
#include "apps/asap3/TroubleCodes.h"
#include "apps/asap3/Watch.h"
#include "base/Failure.h"
#include "base/NumberText.h"
#include "base/VisibleText.h"
#include "client/ClientErrors.h"
#include "client/ReplyReader.h"

namespace korval::apps {
namespace {

/// How the server's answer ends when a plain get meets a text.
constexpr std::string_view kNoNumber = "Invalid data type for answer";
constexpr std::uint16_t kProtocolVersion = 0x0201;

std::string NumberText(float number) { return base::SingleText(number); }
std::string NumberText(double number) { return base::DoubleText(number); }

std::string VersionText(std::uint16_t version) {
  return std::to_string(version >> 8) + "." + std::to_string(version & 0xFF);
}

template <typename Number>
void AddParameter(JsonLine& line, const client::Parameter<Number>& parameter) {
  line.Add("value", parameter.value)
      .Add("minimum", parameter.minimum)
      .Add("maximum", parameter.maximum)
      .Add("increment", parameter.increment);
}

/// A value that was written, as a text or as a JSON member.
std::string ValueText(const client::ExtendedValue& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return *text;
  if (const auto* const real8 = std::get_if<double>(&value)) return NumberText(*real8);
  return NumberText(std::get<float>(value));
}

class Runner {
 public:
  Runner(client::Asap3Client& client, const ClientOptions& options) : client_(client), options_(options) {}

  void Run() {
    if (options_.command == Command::kSend) return Send();
    client_.Init();
    try {
      RunInSession();
    } catch (const base::Failure&) {
      ExitQuietly();
      throw;
    }
    client_.Exit();
  }

 private:
  void RunInSession() {
    const client::ServerIdentity identity = client_.Identify(kProtocolVersion, "asap3");
    if (options_.command == Command::kIdentify) return Identify(identity);
    lun_ = client_.SelectFile(options_.description_file, options_.section, options_.address);
    WorkOnFile();
  }

  void WorkOnFile() {
    switch (options_.command) {
      case Command::kGet:
        return Get();
      case Command::kSet:
        return Set();
      case Command::kXget:
        return ExtendedGet();
      case Command::kXset:
        return ExtendedSet();
      case Command::kWatch:
        return Watch(client_, lun_, options_);
      case Command::kDtc:
        return TroubleCodes();
      case Command::kRaw:
        return RawRequest();
      case Command::kCan:
        return CanFrames();
      case Command::kIdentify:
      case Command::kSend:
        return;
    }
  }

  void ExitQuietly() {
    try {
      client_.Exit();
    } catch (const base::Failure&) {  // the failure that is under way says more
    }
  }

  void Print(const std::string& text, const JsonLine& json) const {
    std::cout << (options_.json ? json.Text() : base::VisibleText(text)) << std::endl;
  }

  void Identify(const client::ServerIdentity& identity) const {
    const std::string version = VersionText(identity.version);
    Print(identity.name + " (ASAP3 " + version + ")",
          JsonLine().Add("name", identity.name).Add("version", version));
  }

  void Get() {
    for (const std::string& name : options_.names) {
      const client::Parameter<float> parameter = GetNumber(name);
      JsonLine json;
      AddParameter(json.Add("name", name), parameter);
      Print(name + " = " + NumberText(parameter.value), json);
    }
  }

  client::Parameter<float> GetNumber(const std::string& name) {
    try {
      return client_.GetParameter(lun_, name);
    } catch (const client::ErrorReply& error) {
      if (options_.json || !error.Description().ends_with(kNoNumber)) throw;
      throw client::ErrorReply(error.Status(), error.Number(),
                               error.Description() + " (no number; xget reads it)");
    }
  }

  void Set() {
    const std::string& name = options_.names.front();
    const float value = std::get<float>(options_.value);
    client_.SetParameter(lun_, name, value);
    Print(name + " set to " + NumberText(value), JsonLine().Add("name", name).Add("value", value));
  }

  void ExtendedGet() {
    for (const std::string& name : options_.names) PrintAnswer(name, client_.ExtendedGet(lun_, name));
  }

  void PrintAnswer(const std::string& name, const client::ExtendedAnswer& answer) const {
    JsonLine json;
    json.Add("name", name);
    std::string text = "no value";
    if (const auto* const real = std::get_if<client::Parameter<float>>(&answer)) {
      AddParameter(json.Add("type", std::string("real")), *real);
      text = NumberText(real->value);
    } else if (const auto* const real8 = std::get_if<client::Parameter<double>>(&answer)) {
      AddParameter(json.Add("type", std::string("real8")), *real8);
      text = NumberText(real8->value);
    } else if (const auto* const string = std::get_if<std::string>(&answer)) {
      json.Add("type", std::string("string")).Add("value", *string);
      text = *string;
    } else {
      json.AddNull("type").AddNull("value");
    }
    Print(name + " = " + text, json);
  }

  void ExtendedSet() {
    const std::string& name = options_.names.front();
    client_.ExtendedSet(lun_, name, options_.value);
    JsonLine json;
    json.Add("name", name);
    std::visit([&json](const auto& value) { json.Add("value", value); }, options_.value);
    Print(name + " set to " + ValueText(options_.value), json);
  }

  void TroubleCodes() {
    const std::vector<TroubleCode> codes = ReadTroubleCodes(client_, lun_);
    if (!options_.json)
      std::cout << (codes.empty() ? "no trouble codes" : "code   hex   status") << std::endl;
    for (const TroubleCode& code : codes) PrintTroubleCode(code);
  }

  void PrintTroubleCode(const TroubleCode& code) const {
    const std::string hex =
        base::ByteBuffer{static_cast<std::uint8_t>(code.code >> 8), static_cast<std::uint8_t>(code.code)}
            .ToHex();
    const std::string status = base::ByteBuffer{code.status}.ToHex();
    std::string text = CodeText(code.code);
    text.append("  ").append(hex).append("  ").append(status);
    Print(text, JsonLine().Add("code", CodeText(code.code)).Add("hex", hex).Add("status", status));
  }

  void RawRequest() {
    const std::string request = options_.bytes.ToHex();
    client_.ExtendedSet(lun_, "kwprequest", request);
    const client::ExtendedAnswer answer = client_.ExtendedGet(lun_, "kwprequest");
    const auto* const hex = std::get_if<std::string>(&answer);
    if (hex == nullptr) throw client::LinkError("The server's answer to 'kwprequest' is no text");
    Print(*hex, JsonLine().Add("request", request).Add("answer", *hex));
  }

  void CanFrames() {
    client_.ExtendedSet(lun_, "xcanframe", options_.frames);
    Print("sent " + options_.frames, JsonLine().Add("frames", options_.frames));
  }

  void Send() {
    const base::ByteBuffer answer = client_.Send(options_.bytes.View());
    Print(answer.ToHex(), JsonLine().Add("answer", answer.ToHex()));
    client::ReplyReader(answer).RequireSuccess();
  }

  client::Asap3Client& client_;
  const ClientOptions& options_;
  std::uint16_t lun_ = 0;
};

}  // namespace

void RunCommand(client::Asap3Client& client, const ClientOptions& options) { Runner(client, options).Run(); }

}  // namespace korval::apps
