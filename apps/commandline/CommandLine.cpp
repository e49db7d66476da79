// SPDX-License-Identifier: MIT
#include "apps/commandline/CommandLine.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <CLI/CLI.hpp>

#include "base/NumberText.h"

namespace korval::apps {
namespace {

constexpr std::size_t kHelpColumn = 32;

/// The usage stands between what the program is and how it works.
class HelpFormat : public CLI::Formatter {
 public:
  explicit HelpFormat(ProgramText text) : text_(std::move(text)) { column_width(kHelpColumn); }

  std::string make_description(const CLI::App*) const override {
    return text_.introduction.empty() ? "" : text_.introduction + "\n\n";
  }

  std::string make_usage(const CLI::App*, std::string) const override {
    const std::string usage = "Usage: " + text_.usage + "\n";
    return text_.description.empty() ? usage : usage + text_.description + "\n";
  }

  std::string make_footer(const CLI::App*) const override { return text_.ending; }

 private:
  ProgramText text_;
};

// Two empty lines, as CLI11 puts them between groups, are one; none stands at the end.
std::string Tidied(const std::string& help) {
  std::string tidied;
  for (const char character : help) {
    if (character != '\n' || !tidied.ends_with("\n\n")) tidied += character;
  }
  tidied.erase(tidied.find_last_not_of('\n') + 1);
  return tidied + "\n";
}

bool IsOption(const std::string& argument) {
  return argument.size() > 1 && argument[0] == '-' && !base::ReadNumber(argument);
}

}  // namespace

class CommandLine::Declarations {
 public:
  using TakeAll = std::function<void(const std::vector<std::string>& values)>;

  explicit Declarations(ProgramText text) {
    app_.set_help_flag();
    app_.formatter(std::make_shared<HelpFormat>(std::move(text)));
  }

  void SetHeading(std::string heading) { heading_ = std::move(heading); }
  void SetWords(std::vector<std::string>& words) { words_ = &words; }

  CLI::Option* AddFlag(const std::string& name, const std::string& help, bool& flag) {
    CLI::Option* const option = app_.add_flag(name, flag, help);
    return option->group(heading_)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  }

  void AddValue(const std::string& name, const std::string& placeholder, const std::string& help,
                TakeAll take) {
    const auto callback = [take = std::move(take)](const CLI::results_t& values) {
      take(values);
      return true;
    };
    CLI::Option* const option = app_.add_option(name, callback, help);
    option->group(heading_)->type_name(placeholder)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  }

  Wanted Read(const std::vector<std::string>& arguments) {
    AddUsualOptions();
    std::vector<std::string> options = TakeWordsOut(arguments);
    std::reverse(options.begin(), options.end());
    app_.parse(std::move(options));
    if (wants_help_) return Wanted::kHelp;
    return wants_version_ ? Wanted::kVersion : Wanted::kRun;
  }

  std::string Help() {
    AddUsualOptions();
    return Tidied(app_.help());
  }

 private:
  void AddUsualOptions() {
    help_ = AddFlag("-h,--help", "Prints this help.", wants_help_);
    version_ = AddFlag("-V,--version", "Prints the version.", wants_version_);
  }

  // CLI11 would take some negative numbers for options, part a text in brackets at its commas, and miss an
  // empty value behind "=".
  std::vector<std::string> TakeWordsOut(const std::vector<std::string>& arguments) {
    std::vector<std::string> options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
      if (*argument == "--") {
        std::for_each(argument + 1, arguments.end(), [this](const std::string& word) { TakeWord(word); });
        break;
      }
      if (!IsOption(*argument)) {
        TakeWord(*argument);
        continue;
      }
      const std::size_t equals = argument->find('=');
      options.push_back(argument->substr(0, equals));
      const CLI::Option* const option = Known(options.back());
      if (equals != std::string::npos) {
        if (!TakesValue(*option)) throw UsageError(options.back() + " takes no value");
        options.push_back(argument->substr(equals + 1));
      } else if (TakesValue(*option)) {
        if (++argument == arguments.end()) throw UsageError(options.back() + " needs a value after it");
        options.push_back(*argument);
      }
      if (option == help_ || option == version_) break;
    }
    return options;
  }

  void TakeWord(const std::string& word) {
    if (words_ == nullptr) throw UsageError("unexpected argument '" + word + "'");
    words_->push_back(word);
  }

  const CLI::Option* Known(const std::string& name) const {
    const CLI::Option* const option = app_.get_option_no_throw(name);
    if (option == nullptr) throw UnknownOption(name);
    return option;
  }

  static bool TakesValue(const CLI::Option& option) { return option.get_expected_min() > 0; }

  CLI::App app_;
  std::string heading_ = "Options";
  std::vector<std::string>* words_ = nullptr;
  const CLI::Option* help_ = nullptr;
  const CLI::Option* version_ = nullptr;
  bool wants_help_ = false;
  bool wants_version_ = false;
};

CommandLine::CommandLine(ProgramText text) : declarations_(std::make_unique<Declarations>(std::move(text))) {}
CommandLine::CommandLine(CommandLine&&) noexcept = default;
CommandLine::~CommandLine() = default;

void CommandLine::Heading(std::string heading) { declarations_->SetHeading(std::move(heading)); }

void CommandLine::Flag(const std::string& name, const std::string& help, bool& flag) {
  declarations_->AddFlag(name, help, flag);
}

void CommandLine::Value(const std::string& name, const std::string& placeholder, const std::string& help,
                        Take take) {
  declarations_->AddValue(
      name, placeholder, help,
      [take = std::move(take)](const std::vector<std::string>& values) { take(values.back()); });
}

void CommandLine::EachValue(const std::string& name, const std::string& placeholder, const std::string& help,
                            Take take) {
  declarations_->AddValue(name, placeholder, help,
                          [take = std::move(take)](const std::vector<std::string>& values) {
                            std::for_each(values.begin(), values.end(), take);
                          });
}

void CommandLine::Words(std::vector<std::string>& words) { declarations_->SetWords(words); }

CommandLine::Wanted CommandLine::Read(const std::vector<std::string>& arguments) {
  return declarations_->Read(arguments);
}

std::string CommandLine::Help() { return declarations_->Help(); }

void RefuseValue(const std::string& option, const std::string& expected, const std::string& value) {
  throw UsageError(option + " takes " + expected + ", not '" + value + "'");
}

std::int32_t ReadWholeNumber(const std::string& option, const std::string& value, std::int32_t from,
                             std::int32_t to, const std::string& expected) {
  const std::optional<std::int32_t> number = base::ReadInteger(value);
  if (number && *number >= from && *number <= to) return *number;
  const std::string range = "a whole number from " + std::to_string(from) + " to " + std::to_string(to);
  RefuseValue(option, expected.empty() ? range : expected, value);
}

}  // namespace korval::apps
