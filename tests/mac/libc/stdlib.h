#pragma once

#include <darwin_types.h>

#define EXIT_SUCCESS 0
#define EXIT_FAILURE 1
#define RAND_MAX 0x7fffffff

DARWIN_BEGIN
typedef struct {
  int quot, rem;
} div_t;
typedef struct {
  long quot, rem;
} ldiv_t;
typedef struct {
  long long quot, rem;
} lldiv_t;

extern int __mb_cur_max;
#define MB_CUR_MAX __mb_cur_max

void* malloc(size_t);
void* calloc(size_t, size_t);
void* realloc(void*, size_t);
void* aligned_alloc(size_t, size_t);
int posix_memalign(void**, size_t, size_t);
void free(void*);
DARWIN_NORETURN void abort(void);
DARWIN_NORETURN void exit(int);
DARWIN_NORETURN void _Exit(int);
int atexit(void (*)(void));
int system(const char*);
char* getenv(const char*);
void* bsearch(const void*, const void*, size_t, size_t, int (*)(const void*, const void*));
void qsort(void*, size_t, size_t, int (*)(const void*, const void*));
int rand(void);
void srand(unsigned);
uint32_t arc4random(void);
void arc4random_buf(void*, size_t);
int abs(int);
long labs(long);
long long llabs(long long);
div_t div(int, int);
ldiv_t ldiv(long, long);
lldiv_t lldiv(long long, long long);
int atoi(const char*);
long atol(const char*);
long long atoll(const char*);
double atof(const char*);
double strtod(const char*, char**);
float strtof(const char*, char**);
long double strtold(const char*, char**);
long strtol(const char*, char**, int);
unsigned long strtoul(const char*, char**, int);
long long strtoll(const char*, char**, int);
unsigned long long strtoull(const char*, char**, int);
int mblen(const char*, size_t);
int mbtowc(wchar_t*, const char*, size_t);
int wctomb(char*, wchar_t);
size_t mbstowcs(wchar_t*, const char*, size_t);
size_t wcstombs(char*, const wchar_t*, size_t);
DARWIN_END
