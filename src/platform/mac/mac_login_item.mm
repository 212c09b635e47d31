#include "platform/mac/mac_login_item.h"

#import <ServiceManagement/ServiceManagement.h>

#include "platform/mac/mac_text.h"

namespace torvane {

static_assert(static_cast<NSInteger>(LoginItemStatus::notRegistered) ==
              SMAppServiceStatusNotRegistered);
static_assert(static_cast<NSInteger>(LoginItemStatus::enabled) == SMAppServiceStatusEnabled);
static_assert(static_cast<NSInteger>(LoginItemStatus::requiresApproval) ==
              SMAppServiceStatusRequiresApproval);
static_assert(static_cast<NSInteger>(LoginItemStatus::notFound) == SMAppServiceStatusNotFound);

LoginItemStatus MacLoginItem::status() const {
  return static_cast<LoginItemStatus>([SMAppService mainAppService].status);
}

std::optional<std::string> MacLoginItem::registerItem() {
  NSError* error = nil;
  if ([[SMAppService mainAppService] registerAndReturnError:&error]) return std::nullopt;
  return toText(error.localizedDescription);
}

std::optional<std::string> MacLoginItem::unregisterItem() {
  NSError* error = nil;
  if ([[SMAppService mainAppService] unregisterAndReturnError:&error]) return std::nullopt;
  return toText(error.localizedDescription);
}

}  // namespace torvane
