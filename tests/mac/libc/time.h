#pragma once

#include <darwin_types.h>

#define CLOCKS_PER_SEC 1000000
#define TIME_UTC 1

DARWIN_BEGIN
struct tm {
  int tm_sec, tm_min, tm_hour, tm_mday, tm_mon, tm_year, tm_wday, tm_yday, tm_isdst;
  long tm_gmtoff;
  char* tm_zone;
};
typedef enum {
  _CLOCK_REALTIME = 0,
  _CLOCK_MONOTONIC_RAW = 4,
  _CLOCK_MONOTONIC = 6,
  _CLOCK_UPTIME_RAW = 8
} clockid_t;
#define CLOCK_REALTIME _CLOCK_REALTIME
#define CLOCK_MONOTONIC_RAW _CLOCK_MONOTONIC_RAW
#define CLOCK_MONOTONIC _CLOCK_MONOTONIC
#define CLOCK_UPTIME_RAW _CLOCK_UPTIME_RAW

time_t time(time_t*);
time_t mktime(struct tm*);
clock_t clock(void);
double difftime(time_t, time_t);
struct tm* gmtime(const time_t*);
struct tm* localtime(const time_t*);
struct tm* gmtime_r(const time_t*, struct tm*);
struct tm* localtime_r(const time_t*, struct tm*);
char* asctime(const struct tm*);
char* ctime(const time_t*);
size_t strftime(char*, size_t, const char*, const struct tm*);
int nanosleep(const struct timespec*, struct timespec*);
int clock_gettime(clockid_t, struct timespec*);
int timespec_get(struct timespec*, int);
DARWIN_END
