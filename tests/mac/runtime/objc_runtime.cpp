#include "mac/runtime/objc_runtime.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace runtime {
namespace {

// All of it is made by the first class that loads, which is before any global is constructed.
struct State {
  std::recursive_mutex mutex;
  std::set<std::string> names;
  std::map<std::string, Class*> classes;
  std::map<Class*, std::vector<MethodList*>> added;  // by categories
  std::set<Class*> resolved;
  std::map<Object**, Object*> weak;
  Class* tinyString = nullptr;
  std::atomic<long> live = 0;
};
State& state() {
  static auto* state = new State;
  return *state;
}

[[noreturn]] void fail(const char* what, const char* first, const char* second) {
  std::fprintf(stderr, "Objective-C: %s %s %s\n", what, first, second);
  std::abort();
}

const char* unique(const char* name) {
  return state().names.insert(name).first->c_str();
}

Implementation findIn(MethodList* list, const char* name) {
  for (; list != nullptr; list = list->next) {
    for (int i = 0; i < list->count; ++i) {
      if (std::strcmp(list->methods[i].selector->name, name) == 0) {
        return list->methods[i].implementation;
      }
    }
  }
  return nullptr;
}

Implementation find(Class* from, const char* name) {
  const std::lock_guard lock(state().mutex);
  for (Class* c = from; c != nullptr; c = c->super) {
    const auto added = state().added.find(c);
    if (added != state().added.end()) {
      for (MethodList* list : added->second) {
        if (const auto found = findIn(list, name)) return found;
      }
    }
    if (const auto found = findIn(c->methods, name)) return found;
  }
  return nullptr;
}

// Lays out a class's variables behind its superclass's, and connects the classes of classes.
void resolve(Class* c) {
  if (!state().resolved.insert(c).second) return;
  if (c->super != nullptr) resolve(c->super);
  Class* root = c;
  while (root->super != nullptr) root = root->super;
  c->meta->meta = root->meta;
  c->meta->super = c->super != nullptr ? c->super->meta : c;
  c->meta->info |= 1;
  long offset = c->super != nullptr ? c->super->size : static_cast<long>(sizeof(Object));
  for (int i = 0; c->variables != nullptr && i < c->variables->count; ++i) {
    const Variable& variable = c->variables->variables[i];
    const long alignment = 1L << ((variable.flags >> 3U) & 63U);
    offset = (offset + alignment - 1) & -alignment;
    *variable.offset = static_cast<std::int32_t>(offset);
    offset += variable.size;
  }
  c->size = (offset + 7) & -8;
  state().classes[c->name] = c;
}

// A short text in a pointer.
bool isTiny(const Object* object) {
  return (reinterpret_cast<std::uintptr_t>(object) & 7U) != 0;
}

Class* classOf(Object* object) {
  return isTiny(object) ? state().tinyString : object->isa;
}

bool isCounted(Object* object) {
  return !isTiny(object) && (object->isa->info & 1) == 0 &&
         std::strcmp(object->isa->name, "NSConstantString") != 0;
}

// Stands in front of the object.
struct Header {
  std::atomic<long> references{1};
  long padding = 0;
};
Header& headerOf(Object* object) {
  return *(reinterpret_cast<Header*>(object) - 1);
}

void callIfPresent(MethodList* list, const char* name, Object* object) {
  if (const auto method = findIn(list, name)) {
    Selector selector{name, nullptr};
    reinterpret_cast<void (*)(Object*, Selector*)>(method)(object, &selector);
  }
}

void construct(Class* c, Object* object) {
  if (c == nullptr) return;
  construct(c->super, object);
  callIfPresent(c->methods, ".cxx_construct", object);
}

void clearWeak(Object* object) {
  const std::lock_guard lock(state().mutex);
  for (auto entry = state().weak.begin(); entry != state().weak.end();) {
    if (entry->second == object) {
      *entry->first = nullptr;
      entry = state().weak.erase(entry);
    } else {
      ++entry;
    }
  }
}

thread_local std::vector<Object*> pool;

}  // namespace

long liveObjects() {
  return state().live;
}

}  // namespace runtime

using runtime::Class;
using runtime::Object;
using runtime::Selector;

extern "C" {

bool blockIs(const void* object);
void* _Block_copy(const void* block);
void _Block_release(const void* block);
void blockRetain(void* block);

void __objc_load(runtime::Image* image) {
  using runtime::state;
  for (auto* s = image->firstSelector; s < image->lastSelector; ++s) {
    if (s->name != nullptr) s->name = runtime::unique(s->name);
  }
  for (auto** c = image->firstClass; c < image->lastClass; ++c) {
    if (*c != nullptr) runtime::resolve(*c);
  }
  for (auto* category = image->firstCategory; category < image->lastCategory; ++category) {
    if (category->className == nullptr) continue;
    Class* c = state().classes[category->className];
    if (category->instanceMethods != nullptr) state().added[c].push_back(category->instanceMethods);
    if (category->classMethods != nullptr) state().added[c->meta].push_back(category->classMethods);
  }
  state().tinyString = state().classes["TinyString"];
}

runtime::Implementation runtimeLookup(Object* object, Selector* selector) {
  if (blockIs(object)) runtime::fail("a block does not understand", selector->name, "");
  Class* c = runtime::classOf(object);
  const auto found = runtime::find(c, selector->name);
  if (found == nullptr) runtime::fail("not implemented:", c->name, selector->name);
  return found;
}

struct SuperCall {
  Object* object;
  Class* from;
};
runtime::Implementation objc_msg_lookup_super(SuperCall* call, Selector* selector) {
  const auto found = runtime::find(call->from, selector->name);
  if (found == nullptr) runtime::fail("not implemented above", call->from->name, selector->name);
  return found;
}

bool runtimeResponds(Object* object, Selector* selector) {
  return runtime::find(runtime::classOf(object), selector->name) != nullptr;
}

bool runtimeIsKind(Object* object, Class* kind) {
  for (Class* c = runtime::classOf(object); c != nullptr; c = c->super) {
    if (c == kind) return true;
  }
  return false;
}

Object* runtimeAllocate(Class* c) {
  void* memory = std::calloc(1, sizeof(runtime::Header) + static_cast<std::size_t>(c->size));
  auto* object = reinterpret_cast<Object*>(new (memory) runtime::Header + 1);
  object->isa = c;
  ++runtime::state().live;
  runtime::construct(c, object);
  return object;
}

void runtimeFree(Object* object) {
  for (Class* c = object->isa; c != nullptr; c = c->super) {
    runtime::callIfPresent(c->methods, ".cxx_destruct", object);
  }
  --runtime::state().live;
  std::free(&runtime::headerOf(object));
}

Object* objc_retain(Object* object) {
  if (object == nullptr) return nullptr;
  if (blockIs(object)) {
    blockRetain(object);
  } else if (runtime::isCounted(object)) {
    ++runtime::headerOf(object).references;
  }
  return object;
}

void objc_release(Object* object) {
  if (object == nullptr) return;
  if (blockIs(object)) {
    _Block_release(object);
    return;
  }
  if (!runtime::isCounted(object)) return;
  const long left = --runtime::headerOf(object).references;
  if (left > 0) return;
  if (left < 0) runtime::fail("released too often:", object->isa->name, "");
  runtime::clearWeak(object);
  Selector dealloc{"dealloc", nullptr};
  reinterpret_cast<void (*)(Object*, Selector*)>(runtimeLookup(object, &dealloc))(object, &dealloc);
}

void* objc_autoreleasePoolPush() {
  return reinterpret_cast<void*>(runtime::pool.size());
}
void objc_autoreleasePoolPop(void* mark) {
  while (runtime::pool.size() > reinterpret_cast<std::size_t>(mark)) {
    Object* object = runtime::pool.back();
    runtime::pool.pop_back();
    objc_release(object);
  }
}
Object* objc_autorelease(Object* object) {
  if (object != nullptr) runtime::pool.push_back(object);
  return object;
}
Object* objc_autoreleaseReturnValue(Object* object) {
  return objc_autorelease(object);
}
Object* objc_retainAutorelease(Object* object) {
  return objc_autorelease(objc_retain(object));
}
Object* objc_retainAutoreleaseReturnValue(Object* object) {
  return objc_autorelease(objc_retain(object));
}
Object* objc_retainAutoreleasedReturnValue(Object* object) {
  return objc_retain(object);
}
Object* objc_unsafeClaimAutoreleasedReturnValue(Object* object) {
  return object;
}
Object* objc_retainBlock(Object* block) {
  return block != nullptr ? static_cast<Object*>(_Block_copy(block)) : nullptr;
}

void objc_storeStrong(Object** place, Object* object) {
  objc_retain(object);
  Object* old = *place;
  *place = object;
  objc_release(old);
}

Object* objc_storeWeak(Object** place, Object* object) {
  const std::lock_guard lock(runtime::state().mutex);
  runtime::state().weak.erase(place);
  *place = object;
  if (object != nullptr && runtime::isCounted(object)) runtime::state().weak[place] = object;
  return object;
}
Object* objc_initWeak(Object** place, Object* object) {
  *place = nullptr;
  return objc_storeWeak(place, object);
}
Object* objc_loadWeakRetained(Object** place) {
  const std::lock_guard lock(runtime::state().mutex);
  return objc_retain(*place);
}
Object* objc_loadWeak(Object** place) {
  return objc_autorelease(objc_loadWeakRetained(place));
}
void objc_destroyWeak(Object** place) {
  const std::lock_guard lock(runtime::state().mutex);
  runtime::state().weak.erase(place);
}

// Properties that the compiler writes the methods of. Here a copy is the object itself.
Object* objc_getProperty(Object* object, Selector*, long offset, bool) {
  return objc_retainAutorelease(
      *reinterpret_cast<Object**>(reinterpret_cast<char*>(object) + offset));
}
void objc_setProperty(Object* object, Selector*, long offset, Object* value, bool, bool) {
  objc_storeStrong(reinterpret_cast<Object**>(reinterpret_cast<char*>(object) + offset), value);
}
void objc_setProperty_atomic(Object* object, Selector* s, Object* value, long offset) {
  objc_setProperty(object, s, offset, value, true, false);
}
void objc_setProperty_atomic_copy(Object* object, Selector* s, Object* value, long offset) {
  objc_setProperty(object, s, offset, value, true, true);
}
void objc_setProperty_nonatomic(Object* object, Selector* s, Object* value, long offset) {
  objc_setProperty(object, s, offset, value, false, false);
}
void objc_setProperty_nonatomic_copy(Object* object, Selector* s, Object* value, long offset) {
  objc_setProperty(object, s, offset, value, false, true);
}
void objc_getPropertyStruct(void* to, void* from, long size, bool, bool) {
  std::memcpy(to, from, static_cast<std::size_t>(size));
}
void objc_setPropertyStruct(void* to, void* from, long size, bool, bool) {
  std::memcpy(to, from, static_cast<std::size_t>(size));
}
void objc_enumerationMutation(Object*) {
  runtime::fail("changed while it was enumerated", "", "");
}
}
