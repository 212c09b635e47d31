#pragma once

#include <darwin_types.h>

#define FP_NAN 1
#define FP_INFINITE 2
#define FP_ZERO 3
#define FP_NORMAL 4
#define FP_SUBNORMAL 5
#define FP_ILOGB0 (-2147483647 - 1)
#define FP_ILOGBNAN (-2147483647 - 1)
#define MATH_ERRNO 1
#define MATH_ERREXCEPT 2
#define math_errhandling 2
#define HUGE_VAL __builtin_huge_val()
#define HUGE_VALF __builtin_huge_valf()
#define HUGE_VALL __builtin_huge_vall()
#define INFINITY __builtin_inff()
#define NAN __builtin_nanf("")

DARWIN_BEGIN
typedef float float_t;
typedef double double_t;

// Each for double, float and long double.
#define OF_ONE(name)    \
  double name(double);  \
  float name##f(float); \
  long double name##l(long double);
#define OF_TWO(name)           \
  double name(double, double); \
  float name##f(float, float); \
  long double name##l(long double, long double);
// clang-format off
OF_ONE(acos)
OF_ONE(asin)
OF_ONE(atan) OF_ONE(acosh) OF_ONE(asinh) OF_ONE(atanh) OF_ONE(cos) OF_ONE(sin) OF_ONE(tan)
    OF_ONE(cosh) OF_ONE(sinh) OF_ONE(tanh) OF_ONE(exp) OF_ONE(exp2) OF_ONE(expm1) OF_ONE(log)
        OF_ONE(log10) OF_ONE(log1p) OF_ONE(log2) OF_ONE(logb) OF_ONE(sqrt) OF_ONE(cbrt) OF_ONE(fabs)
            OF_ONE(ceil) OF_ONE(floor) OF_ONE(trunc) OF_ONE(round) OF_ONE(rint) OF_ONE(nearbyint)
                OF_ONE(erf) OF_ONE(erfc) OF_ONE(lgamma) OF_ONE(tgamma) OF_TWO(atan2) OF_TWO(pow)
                    OF_TWO(fmod) OF_TWO(hypot) OF_TWO(fdim) OF_TWO(fmax) OF_TWO(fmin)
                        OF_TWO(copysign) OF_TWO(nextafter) OF_TWO(remainder)
// clang-format on
#undef OF_ONE
#undef OF_TWO

                            double fma(double, double, double);
float fmaf(float, float, float);
long double fmal(long double, long double, long double);
double frexp(double, int*);
float frexpf(float, int*);
long double frexpl(long double, int*);
double ldexp(double, int);
float ldexpf(float, int);
long double ldexpl(long double, int);
double modf(double, double*);
float modff(float, float*);
long double modfl(long double, long double*);
double scalbn(double, int);
float scalbnf(float, int);
long double scalbnl(long double, int);
double scalbln(double, long);
float scalblnf(float, long);
long double scalblnl(long double, long);
double remquo(double, double, int*);
float remquof(float, float, int*);
long double remquol(long double, long double, int*);
double nexttoward(double, long double);
float nexttowardf(float, long double);
long double nexttowardl(long double, long double);
double nan(const char*);
float nanf(const char*);
long double nanl(const char*);
int ilogb(double);
int ilogbf(float);
int ilogbl(long double);
long lrint(double);
long lrintf(float);
long lrintl(long double);
long lround(double);
long lroundf(float);
long lroundl(long double);
long long llrint(double);
long long llrintf(float);
long long llrintl(long double);
long long llround(double);
long long llroundf(float);
long long llroundl(long double);
DARWIN_END
