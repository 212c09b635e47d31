#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <stdint.h>

typedef const struct __SecCode* SecStaticCodeRef;
typedef struct __SecRequirement* SecRequirementRef;

typedef int32_t OSStatus;
enum : OSStatus { errSecSuccess = 0 };

typedef uint32_t SecCSFlags;
enum __attribute__((flag_enum)) : SecCSFlags { kSecCSDefaultFlags = 0 };
enum : uint32_t {
  kSecCSCheckAllArchitectures = 1 << 0,
  kSecCSCheckNestedCode = 1 << 3,
  kSecCSStrictValidate = 1 << 4
};

extern "C" {
OSStatus SecStaticCodeCreateWithPath(CFURLRef path, SecCSFlags flags,
                                     SecStaticCodeRef* __attribute__((cf_returns_retained))
                                     staticCode);
OSStatus SecStaticCodeCheckValidity(SecStaticCodeRef staticCode, SecCSFlags flags,
                                    SecRequirementRef requirement);
OSStatus SecRequirementCreateWithString(CFStringRef text, SecCSFlags flags,
                                        SecRequirementRef* __attribute__((cf_returns_retained))
                                        requirement);
}
