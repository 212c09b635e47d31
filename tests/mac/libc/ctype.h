#pragma once

#include <darwin_types.h>

#define _CTYPE_A 0x100L
#define _CTYPE_C 0x200L
#define _CTYPE_D 0x400L
#define _CTYPE_G 0x800L
#define _CTYPE_L 0x1000L
#define _CTYPE_P 0x2000L
#define _CTYPE_S 0x4000L
#define _CTYPE_U 0x8000L
#define _CTYPE_X 0x10000L
#define _CTYPE_B 0x20000L
#define _CTYPE_R 0x40000L

DARWIN_BEGIN
int isascii(int);
int isalnum(int);
int isalpha(int);
int isblank(int);
int iscntrl(int);
int isdigit(int);
int isgraph(int);
int islower(int);
int isprint(int);
int ispunct(int);
int isspace(int);
int isupper(int);
int isxdigit(int);
int tolower(int);
int toupper(int);
DARWIN_END
