#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "torvane_ipad/console.h"
#include "torvane_ipad/options.h"

namespace torvane::ipad {

struct OptionSpec {
  std::string_view name;      // without the dashes
  std::string_view argument;  // empty for a switch
  std::string_view accepts;   // what the argument must be, for the error text
  std::string_view help;
  bool (*set)(Options& options, std::string_view argument);  // false: not what it accepts
};

struct CommandSpec {
  std::string_view name;
  std::string_view operands = "";
  std::size_t leastOperands = 0;
  std::size_t mostOperands = 0;
  std::string_view summary;
  std::string_view details;
  std::string_view example;
  std::vector<std::string_view> options = {};  // beside the common ones and those of the link
  Exit (*run)(const Options& options, const Console& console);
  // Takes over what the operands say; why they, or the options, make no sense. Empty: they do.
  std::string (*check)(Options& options) = nullptr;
  bool reachesHelper = true;  // and takes the options of the link
};

// Of every command, and of every one that reaches a helper.
[[nodiscard]] std::span<const OptionSpec> commonOptions();
[[nodiscard]] std::span<const OptionSpec> linkOptions();

// In the order in which they are told.
[[nodiscard]] std::span<const CommandSpec> allCommands();

// Null when there is none of that name.
[[nodiscard]] const CommandSpec* findCommand(std::string_view name);
[[nodiscard]] const OptionSpec* findOption(std::string_view name);
[[nodiscard]] bool takesOption(const CommandSpec& command, std::string_view option);

}  // namespace torvane::ipad
