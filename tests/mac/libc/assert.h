#include <darwin_types.h>

#undef assert
#ifdef NDEBUG
#define assert(e) ((void)0)
#else
DARWIN_BEGIN
DARWIN_NORETURN void __assert_rtn(const char*, const char*, int, const char*);
DARWIN_END
#define assert(e) ((e) ? (void)0 : __assert_rtn(__func__, __FILE__, __LINE__, #e))
#endif
#if !defined(__cplusplus) && !defined(static_assert)
#define static_assert _Static_assert
#endif
