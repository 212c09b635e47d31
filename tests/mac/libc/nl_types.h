#pragma once

#include <darwin_types.h>

#define NL_CAT_LOCALE 1

DARWIN_BEGIN
typedef struct __nl_cat_d* nl_catd;
nl_catd catopen(const char*, int);
char* catgets(nl_catd, int, int, const char*);
int catclose(nl_catd);
DARWIN_END
