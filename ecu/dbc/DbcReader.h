// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "ecu/dbc/DbcFile.h"
#include "ecu/dbc/DbcTokens.h"

namespace korval::ecu {

/// Reads a DBC file statement by statement.
class DbcReader {
 public:
  explicit DbcReader(std::string_view content) : rest_(content) {}
  DbcFile Read();

 private:
  /// A statement without its keyword. BO_ and SG_ end with their line, the others with a semicolon.
  struct Statement {
    std::string_view keyword;
    std::string_view text;
  };

  Statement NextStatement();
  std::string_view TakeLine();
  std::string_view TakeToSemicolon();
  void Note(const std::string& what);
  void AddNote(const std::string& note);

  void ReadMessage(DbcTokens tokens);
  void ReadSignal(DbcTokens tokens);
  void ReadTexts(DbcTokens tokens);
  void ReadNumberType(DbcTokens tokens);
  void ReadAttribute(DbcTokens tokens);
  void LeaveOutUnreachableSignals();

  /// Takes the number of a message; null when there is none of that number.
  DbcFile::Message* TakeMessage(DbcTokens& tokens);
  /// Takes the number of a message and the name of one of its signals; null when there is none.
  DbcFile::Signal* TakeSignal(DbcTokens& tokens);

  std::string_view rest_;
  std::size_t line_ = 1;            // of rest_
  std::size_t statement_line_ = 1;  // of the statement that is being read
  DbcFile file_;
  std::map<CanIdentifier, std::size_t> index_;  // of the messages
  std::size_t endless_ = 0;                     // statements without an end
  bool in_message_ = false;                     // signals belong to the last message
};

}  // namespace korval::ecu
