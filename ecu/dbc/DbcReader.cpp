// SPDX-License-Identifier: MIT
#include "ecu/dbc/DbcReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace korval::ecu {
namespace {

constexpr std::size_t kMostNotes = 100;
constexpr std::size_t kMostEndless = 16;
constexpr std::size_t kMostSignals = 1024;
constexpr std::int32_t kLongestCycle = 3600000;
constexpr std::uint32_t kExtendedFlag = 0x80000000;
// Signals that belong to no message are kept in a message of this number.
constexpr std::int64_t kNoMessage = 0xC0000000;

// The number of a message is its identifier, with the most significant bit set when that has 29 bits.
std::optional<CanIdentifier> IdentifierOf(std::int64_t number) {
  if (number < 0 || number > 0xFFFFFFFF) return std::nullopt;
  const auto bits = static_cast<std::uint32_t>(number);
  const bool extended = (bits & kExtendedFlag) != 0;
  const CanIdentifier identifier{bits & ~kExtendedFlag, extended};
  if (identifier.number > (extended ? kLastExtendedIdentifier : kLastBaseIdentifier)) return std::nullopt;
  return identifier;
}

bool LiesInside(const DbcFile::Signal& signal, std::size_t bytes) {
  if (signal.bits < 1 || signal.bits > 64) return false;
  const std::size_t first = signal.intel ? signal.start_bit : signal.MotorolaFirstBit();
  return first + signal.bits <= bytes * 8;
}

// M, m3, or m3M: a multiplexor, at the multiplexor's value 3, or both.
bool ReadMultiplexing(std::string_view indicator, DbcFile::Signal& signal) {
  if (indicator.empty()) return true;
  if (indicator == "M") {
    signal.is_multiplexor = true;
    return true;
  }
  std::uint32_t value = 0;
  const char* const end = indicator.data() + indicator.size();
  const auto [stop, error] = std::from_chars(indicator.data() + 1, end, value);
  if (indicator.front() != 'm' || error != std::errc{} || stop != end) return false;
  signal.multiplexed_at = value;
  return true;
}

// start|bits@order sign (factor,offset) [lowest|highest] "unit" receivers
bool ReadPlace(DbcTokens& tokens, DbcFile::Signal& signal) {
  const auto start = tokens.Integer();
  if (!tokens.Take('|')) return false;
  const auto bits = tokens.Integer();
  if (!tokens.Take('@')) return false;
  signal.intel = tokens.Take('1');
  if (!signal.intel && !tokens.Take('0')) return false;
  signal.is_signed = tokens.Take('-');
  if (!signal.is_signed && !tokens.Take('+')) return false;
  if (!start || !bits || *start < 0 || *bits < 0) return false;
  signal.start_bit = static_cast<std::size_t>(*start);
  signal.bits = static_cast<std::size_t>(*bits);
  return true;
}

bool ReadScale(DbcTokens& tokens, DbcFile::Signal& signal) {
  if (!tokens.Take('(')) return false;
  const auto factor = tokens.Number();
  if (!tokens.Take(',')) return false;
  const auto offset = tokens.Number();
  if (!tokens.Take(')') || !factor || !offset || *factor == 0) return false;
  signal.factor = *factor;
  signal.offset = *offset;
  return true;
}

bool ReadUnit(DbcTokens& tokens, DbcFile::Signal& signal) {
  if (!tokens.Take('[') || !tokens.Number() || !tokens.Take('|') || !tokens.Number() || !tokens.Take(']')) {
    return false;
  }
  auto unit = tokens.Quoted();
  if (!unit) return false;
  signal.unit = *std::move(unit);
  return true;
}

}  // namespace

DbcFile DbcFile::Read(std::string_view content) { return DbcReader(content).Read(); }

DbcFile DbcReader::Read() {
  while (!rest_.empty()) {
    const Statement statement = NextStatement();
    const DbcTokens tokens(statement.text);
    if (statement.keyword == "BO_") {
      ReadMessage(tokens);
    } else if (statement.keyword == "SG_") {
      ReadSignal(tokens);
    } else if (statement.keyword == "VAL_") {
      ReadTexts(tokens);
    } else if (statement.keyword == "SIG_VALTYPE_") {
      ReadNumberType(tokens);
    } else if (statement.keyword == "BA_") {
      ReadAttribute(tokens);
    }
  }
  LeaveOutUnreachableSignals();
  return std::move(file_);
}

// A keyword alone in its line is one of the list of names that opens the file.
DbcReader::Statement DbcReader::NextStatement() {
  statement_line_ = line_;
  const std::string_view from_here = rest_;
  const std::string_view line = TakeLine();
  DbcTokens tokens(line);
  const std::string_view keyword = tokens.Word();
  const char next = tokens.Peek();
  if (keyword == "BO_" || keyword == "SG_") {
    return {keyword, line.substr(static_cast<std::size_t>(keyword.data() + keyword.size() - line.data()))};
  }
  if (!keyword.ends_with('_') || next == '\0' || next == ':') return {};
  line_ = statement_line_;
  rest_ = from_here.substr(static_cast<std::size_t>(keyword.data() + keyword.size() - from_here.data()));
  return {keyword, TakeToSemicolon()};
}

std::string_view DbcReader::TakeLine() {
  const std::size_t end = std::min(rest_.find('\n'), rest_.size());
  const std::string_view line = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + 1, rest_.size()));
  ++line_;
  return line;
}

// A statement that does not end is given up with its first line. After many of them no end is looked for,
// which would take the square of the file's length.
std::string_view DbcReader::TakeToSemicolon() {
  bool quoted = false;
  for (std::size_t i = 0; i < rest_.size() && endless_ < kMostEndless; ++i) {
    if (rest_[i] == '"') quoted = !quoted;
    if (rest_[i] != ';' || quoted) continue;
    const std::string_view text = rest_.substr(0, i);
    line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    rest_.remove_prefix(i + 1);
    return text;
  }
  ++endless_;
  Note("the statement does not end");
  TakeLine();
  return {};
}

void DbcReader::Note(const std::string& what) {
  AddNote("Line " + std::to_string(statement_line_) + ": " + what + ", left out.");
}

void DbcReader::AddNote(const std::string& note) {
  if (file_.notes.size() > kMostNotes) return;
  file_.notes.push_back(file_.notes.size() == kMostNotes ? "There is more." : note);
}

// number name: length sender
void DbcReader::ReadMessage(DbcTokens tokens) {
  in_message_ = false;
  const auto number = tokens.Integer();
  const std::string name(tokens.Word());
  if (!number || name.empty() || !tokens.Take(':')) return Note("no message");
  if (*number == kNoMessage) return;
  const auto length = tokens.Integer();
  const auto identifier = IdentifierOf(*number);
  if (!identifier || !length || *length < 0)
    return Note("message " + name + " has no identifier or no length");
  if (static_cast<std::size_t>(*length) > CanFrame::kMostBytes) {
    return Note("message " + name + " is longer than 8 bytes");
  }
  if (!index_.emplace(*identifier, file_.messages.size()).second) {
    return Note("message " + name + " has the identifier of another one");
  }
  file_.messages.push_back({name, *identifier, static_cast<std::size_t>(*length), 0, {}});
  in_message_ = true;
}

// name multiplexing : place scale [range] "unit" receivers
void DbcReader::ReadSignal(DbcTokens tokens) {
  if (!in_message_) return;
  DbcFile::Message& message = file_.messages.back();
  DbcFile::Signal signal;
  signal.name = tokens.Word();
  const std::string_view indicator = tokens.Word();
  if (signal.name.empty() || !tokens.Take(':')) return Note("no signal");
  if (!ReadMultiplexing(indicator, signal)) {
    return Note("signal " + signal.name + " has a multiplexing that is not understood");
  }
  if (!ReadPlace(tokens, signal) || !ReadScale(tokens, signal) || !ReadUnit(tokens, signal)) {
    return Note("signal " + signal.name + " is damaged");
  }
  if (!LiesInside(signal, message.length))
    return Note("signal " + signal.name + " lies outside " + message.name);
  if (message.signals.size() == kMostSignals)
    return Note("message " + message.name + " has too many signals");
  message.signals.push_back(std::move(signal));
}

DbcFile::Message* DbcReader::TakeMessage(DbcTokens& tokens) {
  const auto identifier = IdentifierOf(tokens.Integer().value_or(-1));
  if (!identifier) return nullptr;
  const auto found = index_.find(*identifier);
  return found == index_.end() ? nullptr : &file_.messages[found->second];
}

DbcFile::Signal* DbcReader::TakeSignal(DbcTokens& tokens) {
  DbcFile::Message* const message = TakeMessage(tokens);
  const std::string_view name = tokens.Word();
  if (message == nullptr) return nullptr;
  const auto found = std::find_if(message->signals.begin(), message->signals.end(),
                                  [name](const DbcFile::Signal& signal) { return signal.name == name; });
  return found == message->signals.end() ? nullptr : &*found;
}

// number signal value "text" value "text" ...; texts of environment variables begin with a name instead.
void DbcReader::ReadTexts(DbcTokens tokens) {
  DbcFile::Signal* const signal = TakeSignal(tokens);
  if (signal == nullptr) return;
  signal->texts.clear();
  while (tokens.Peek() != '\0') {
    const auto raw = tokens.Integer();
    auto text = tokens.Quoted();
    if (!raw || !text) return Note("a text of signal " + signal->name + " is damaged");
    signal->texts.push_back({*raw, *std::move(text)});
  }
}

// number signal : type
void DbcReader::ReadNumberType(DbcTokens tokens) {
  DbcFile::Signal* const signal = TakeSignal(tokens);
  if (signal == nullptr) return;
  tokens.Take(':');
  const auto type = tokens.Integer();
  if (type == 1 && signal->bits == 32) signal->number = DbcFile::Number::kFloat;
  if (type == 2 && signal->bits == 64) signal->number = DbcFile::Number::kDouble;
}

// "name" BO_ number value
void DbcReader::ReadAttribute(DbcTokens tokens) {
  if (tokens.Quoted() != "GenMsgCycleTime" || tokens.Word() != "BO_") return;
  DbcFile::Message* const message = TakeMessage(tokens);
  const auto cycle = tokens.Number();
  if (message == nullptr || !cycle || !(*cycle >= 0 && *cycle <= kLongestCycle)) return;
  message->cycle_ms = static_cast<std::int32_t>(*cycle);
}

void DbcReader::LeaveOutUnreachableSignals() {
  for (DbcFile::Message& message : file_.messages) {
    const auto multiplexors = std::count_if(message.signals.begin(), message.signals.end(),
                                            [](const auto& signal) { return signal.is_multiplexor; });
    if (multiplexors == 1) continue;
    const std::size_t left_out = std::erase_if(
        message.signals, [](const DbcFile::Signal& signal) { return signal.multiplexed_at.has_value(); });
    if (left_out > 0) {
      AddNote("Message " + message.name + " has " + std::to_string(multiplexors) +
              " multiplexors instead of one: its " + std::to_string(left_out) +
              " multiplexed signals are left out.");
    }
  }
}

}  // namespace korval::ecu
