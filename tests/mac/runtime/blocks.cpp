// Blocks, as LLVM's public "Block Implementation Specification" has them.

#include <atomic>
#include <cstdlib>
#include <cstring>

extern "C" {

void* _NSConcreteStackBlock[32];
void* _NSConcreteMallocBlock[32];
void* _NSConcreteGlobalBlock[32];

struct Object;
Object* objc_retain(Object* object);
void objc_release(Object* object);
}

namespace {

constexpr int kCountMask = 0xfffe;
constexpr int kNeedsFree = 1 << 24;
constexpr int kHasCopy = 1 << 25;
constexpr int kIsGlobal = 1 << 28;

constexpr int kKindMask = 15;
constexpr int kKindObject = 3;
constexpr int kKindBlock = 7;
constexpr int kFromByref = 128;

struct Descriptor {
  unsigned long reserved;
  unsigned long size;
  void (*copy)(void*, const void*);
  void (*dispose)(const void*);
};
struct Block {
  void* isa;
  std::atomic<int> flags;
  int reserved;
  void (*invoke)();
  Descriptor* descriptor;
};
// A variable that a block may change.
struct Byref {
  void* isa;
  Byref* forwarding;
  std::atomic<int> flags;
  int size;
  void (*keep)(Byref*, Byref*);
  void (*destroy)(Byref*);
};

Byref* copied(Byref* variable) {
  if ((variable->flags & kNeedsFree) != 0) {
    variable->flags += 2;
    return variable;
  }
  auto* copy = static_cast<Byref*>(std::malloc(static_cast<std::size_t>(variable->size)));
  std::memcpy(static_cast<void*>(copy), variable, static_cast<std::size_t>(variable->size));
  copy->flags = copy->flags | kNeedsFree | 4;  // for the block and for the frame
  copy->forwarding = copy;
  variable->forwarding = copy;
  if ((copy->flags & kHasCopy) != 0) copy->keep(copy, variable);
  return copy;
}

void dropped(Byref* variable) {
  if ((variable->flags & kNeedsFree) == 0) return;
  if (((variable->flags -= 2) & kCountMask) != 0) return;
  if ((variable->flags & kHasCopy) != 0) variable->destroy(variable);
  std::free(variable);
}

}  // namespace

extern "C" {

bool blockIs(const void* object) {
  if ((reinterpret_cast<unsigned long>(object) & 7U) != 0) return false;
  const void* isa = static_cast<const Block*>(object)->isa;
  return isa == _NSConcreteStackBlock || isa == _NSConcreteMallocBlock ||
         isa == _NSConcreteGlobalBlock;
}

// One that has been copied counts its owners; one on the stack goes with its frame, whoever holds
// it.
void blockRetain(void* given) {
  auto* block = static_cast<Block*>(given);
  if ((block->flags & kNeedsFree) != 0) block->flags += 2;
}

void* _Block_copy(const void* given) {
  auto* block = static_cast<Block*>(const_cast<void*>(given));
  if (block == nullptr || (block->flags & kIsGlobal) != 0) return block;
  if ((block->flags & kNeedsFree) != 0) {
    block->flags += 2;
    return block;
  }
  auto* copy = static_cast<Block*>(std::malloc(block->descriptor->size));
  std::memcpy(static_cast<void*>(copy), block, block->descriptor->size);
  copy->isa = _NSConcreteMallocBlock;
  copy->flags = (copy->flags & ~0xffff) | kNeedsFree | 2;
  if ((copy->flags & kHasCopy) != 0) copy->descriptor->copy(copy, block);
  return copy;
}

void _Block_release(const void* given) {
  auto* block = static_cast<Block*>(const_cast<void*>(given));
  if (block == nullptr || (block->flags & kNeedsFree) == 0) return;
  if (((block->flags -= 2) & kCountMask) != 0) return;
  if ((block->flags & kHasCopy) != 0) block->descriptor->dispose(block);
  std::free(block);
}

void _Block_object_assign(void* place, const void* value, int kind) {
  auto** to = static_cast<const void**>(place);
  if ((kind & kFromByref) != 0) {
    *to = value;
  } else if ((kind & kKindMask) == kKindObject) {
    *to = objc_retain(static_cast<Object*>(const_cast<void*>(value)));
  } else if ((kind & kKindMask) == kKindBlock) {
    *to = _Block_copy(value);
  } else {
    *to = copied(static_cast<const Byref*>(value)->forwarding);
  }
}

void _Block_object_dispose(const void* value, int kind) {
  if ((kind & kFromByref) != 0) return;
  if ((kind & kKindMask) == kKindObject) {
    objc_release(static_cast<Object*>(const_cast<void*>(value)));
  } else if ((kind & kKindMask) == kKindBlock) {
    _Block_release(value);
  } else {
    dropped(static_cast<const Byref*>(value)->forwarding);
  }
}
}
