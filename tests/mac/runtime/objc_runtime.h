// A small Objective-C runtime that runs ARC code of this project on Linux: what clang emits for
// -fobjc-runtime=gnustep-2.0, one program, no forwarding, no observation, no exceptions of its own.
#pragma once

#include <cstdint>

namespace runtime {

struct Selector {
  const char* name;
  const char* types;
};

using Implementation = void (*)();

struct Method {
  Implementation implementation;
  Selector* selector;
  const char* types;
};
struct MethodList {
  MethodList* next;
  int count;
  long size;
  Method methods[];
};

struct Variable {
  const char* name;
  const char* type;
  std::int32_t* offset;
  std::uint32_t size;
  std::uint32_t flags;  // the alignment's logarithm from bit 3 on
};
struct VariableList {
  int count;
  long size;
  Variable variables[];
};

struct Class {
  Class* meta;
  Class* super;
  const char* name;
  long version;
  long info;  // bit 0: a class's class
  long size;
  VariableList* variables;
  MethodList* methods;
  void* unused[9];
};

struct Category {
  const char* name;
  const char* className;
  MethodList* instanceMethods;
  MethodList* classMethods;
  void* protocols;
};

struct Object {
  Class* isa;
};

// What the program's start hands over: the first and the last of each list.
struct Image {
  long version;
  Selector *firstSelector, *lastSelector;
  Class **firstClass, **lastClass;
  void **firstReference, **lastReference;
  Category *firstCategory, *lastCategory;
};

// Objects that have not been freed. None may be left when the program has ended.
[[nodiscard]] long liveObjects();

}  // namespace runtime
