#include "torvane_ipad/command_line.h"

#include <optional>
#include <string_view>

#include "protocol/utf8.h"
#include "torvane_ipad/command_table.h"

namespace torvane::ipad {
namespace {

class Parser {
 public:
  explicit Parser(std::span<const std::string> arguments) : arguments_(arguments) {}

  CommandLine parse() {
    for (; next_ < arguments_.size() && line_.error.empty(); ++next_) readOne();
    const bool isQuestion = line_.options.help || line_.options.version;
    if (!isQuestion && line_.error.empty()) check();
    return std::move(line_);
  }

 private:
  void readOne() {
    const std::string_view argument = arguments_[next_];
    if (!isValidUtf8(argument)) return fail("The arguments must be UTF-8 text.");
    if (!onlyOperands_ && argument == "-h") {
      line_.options.help = true;
    } else if (!onlyOperands_ && argument == "--") {
      onlyOperands_ = true;
    } else if (!onlyOperands_ && argument.size() > 1 && argument.front() == '-') {
      readOption(argument);
    } else if (line_.options.command.empty()) {
      line_.options.command = argument;
    } else {
      line_.options.operands.emplace_back(argument);
    }
  }

  void readOption(std::string_view argument) {
    const bool isLong = argument.starts_with("--");
    const auto equals = argument.find('=');
    const std::string name(argument.substr(2, equals == argument.npos ? equals : equals - 2));
    const OptionSpec* option = isLong ? findOption(name) : nullptr;
    if (option == nullptr) return fail("There is no option " + std::string(argument) + ".");
    used_.push_back(option);

    if (option->argument.empty()) {
      if (equals != argument.npos) return fail("--" + name + " takes no argument.");
      option->set(line_.options, {});
      return;
    }
    const auto value = optionValue(argument, equals);
    if (!value || !option->set(line_.options, *value)) {
      fail("--" + name + " needs " + std::string(option->accepts) + ".");
    }
  }

  std::optional<std::string_view> optionValue(std::string_view argument, std::size_t equals) {
    if (equals != argument.npos) return argument.substr(equals + 1);
    if (next_ + 1 == arguments_.size()) return std::nullopt;
    ++next_;
    return isValidUtf8(arguments_[next_]) ? std::optional<std::string_view>(arguments_[next_])
                                          : std::nullopt;
  }

  // What can only be judged when everything was read.
  void check() {
    Options& options = line_.options;
    if (options.command.empty()) return fail("Say what to do.");
    const CommandSpec* command = findCommand(options.command);
    if (command == nullptr) return fail("There is no command \"" + options.command + "\".");
    for (const OptionSpec* option : used_) {
      if (!takesOption(*command, option->name)) {
        return fail("\"" + options.command + "\" takes no --" + std::string(option->name) + ".");
      }
    }
    if (options.operands.size() < command->leastOperands) {
      return fail("\"" + options.command + "\" needs " + std::string(command->operands) + ".");
    }
    if (options.operands.size() > command->mostOperands) {
      return fail("\"" + options.operands[command->mostOperands] + "\" is one argument too many.");
    }
    if (command->check != nullptr) fail(command->check(options));
  }

  void fail(std::string error) {
    if (line_.error.empty()) line_.error = std::move(error);
  }

  std::span<const std::string> arguments_;
  std::size_t next_ = 0;
  bool onlyOperands_ = false;
  std::vector<const OptionSpec*> used_;
  CommandLine line_;
};

}  // namespace

CommandLine parseCommandLine(std::span<const std::string> arguments) {
  return Parser(arguments).parse();
}

}  // namespace torvane::ipad
