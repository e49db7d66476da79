// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/commandline/UsageError.h"

namespace korval::apps {

/// What the help says of a program besides its options.
struct ProgramText {
  std::string introduction = {};  ///< above the usage
  std::string usage;              ///< the program's name and what may follow it
  std::string description = {};   ///< below the usage
  std::string ending = {};        ///< below the options
};

/// The command line of a program: which options it has, how they are read, and the text of its help. Every
/// program has -h, --help, -V and --version.
///
/// An option's value follows it, also one that begins with a dash, or stands behind "=". Options and words
/// come in any order. A word that is a negative number is no option, and nothing after "--" is one.
class CommandLine {
 public:
  /// Is given an option's value and raises UsageError when it is of no use.
  using Take = std::function<void(const std::string& value)>;

  enum class Wanted { kRun, kHelp, kVersion };

  explicit CommandLine(ProgramText text);
  CommandLine(CommandLine&&) noexcept;
  ~CommandLine();

  /// The options declared from now on stand below `heading` in the help; those of every program stand below
  /// the last one.
  void Heading(std::string heading);
  /// An option without a value, which sets `flag`. The flag has to outlive this object, as everything
  /// that a `take` refers to.
  void Flag(const std::string& name, const std::string& help, bool& flag);
  /// An option with a value; `placeholder` is what the help calls it. Where it is repeated, the last one
  /// counts.
  void Value(const std::string& name, const std::string& placeholder, const std::string& help, Take take);
  /// An option that may be repeated; `take` is given each value in turn.
  void EachValue(const std::string& name, const std::string& placeholder, const std::string& help, Take take);
  /// What is no option goes into `words`; a program without this call takes none.
  void Words(std::vector<std::string>& words);

  /// Reads the arguments behind the program's name. Raises UsageError. After --help or --version the rest is
  /// not looked at. Of Read and Help one is called, once.
  Wanted Read(const std::vector<std::string>& arguments);
  /// The text of --help.
  std::string Help();

 private:
  class Declarations;

  std::unique_ptr<Declarations> declarations_;
};

/// Raises UsageError: the option takes `expected`, not the value.
[[noreturn]] void RefuseValue(const std::string& option, const std::string& expected,
                              const std::string& value);
/// A whole number of a range. Raises UsageError, with `expected` or with the range.
std::int32_t ReadWholeNumber(const std::string& option, const std::string& value, std::int32_t from,
                             std::int32_t to, const std::string& expected = "");

}  // namespace korval::apps
