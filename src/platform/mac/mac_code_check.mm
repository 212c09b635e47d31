#include "platform/mac/mac_code_check.h"

#import <Foundation/Foundation.h>
#import <Security/Security.h>

#include "platform/mac/cf_ref.h"
#include "platform/mac/mac_text.h"

namespace torvane {
namespace {

constexpr SecCSFlags kEverything =
    kSecCSCheckAllArchitectures | kSecCSCheckNestedCode | kSecCSStrictValidate;

CFOwned<SecStaticCodeRef> codeAt(const std::string& path) {
  NSURL* url = [NSURL fileURLWithPath:toNSString(path)];
  SecStaticCodeRef code = nullptr;
  SecStaticCodeCreateWithPath((__bridge CFURLRef)url, kSecCSDefaultFlags, &code);
  return CFOwned<SecStaticCodeRef>(code);
}

CFOwned<SecRequirementRef> requirementOf(const std::string& text) {
  SecRequirementRef requirement = nullptr;
  SecRequirementCreateWithString((__bridge CFStringRef)toNSString(text), kSecCSDefaultFlags,
                                 &requirement);
  return CFOwned<SecRequirementRef>(requirement);
}

}  // namespace

bool MacCodeCheck::meets(const std::string& path, const std::string& requirement) const {
  const auto code = codeAt(path);
  const auto required = requirementOf(requirement);
  return code && required &&
         SecStaticCodeCheckValidity(code.get(), kEverything, required.get()) == errSecSuccess;
}

}  // namespace torvane
