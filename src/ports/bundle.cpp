#include "ports/bundle.h"

namespace torvane {

std::string buildOf(const Bundle& bundle) {
  return textOf(bundle.infoValue("CFBundleVersion")).value_or("0");
}

std::optional<std::string> identifierOf(const Bundle& bundle) {
  return textOf(bundle.infoValue("CFBundleIdentifier"));
}

}  // namespace torvane
