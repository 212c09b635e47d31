#pragma once

#include <darwin_types.h>

#define EOF (-1)
#define BUFSIZ 1024
#define FILENAME_MAX 1024
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2

DARWIN_BEGIN
typedef struct __sFILE FILE;
typedef off_t fpos_t;
extern FILE *__stdinp, *__stdoutp, *__stderrp;
#define stdin __stdinp
#define stdout __stdoutp
#define stderr __stderrp

FILE* fopen(const char*, const char*);
FILE* freopen(const char*, const char*, FILE*);
FILE* fdopen(int, const char*);
FILE* tmpfile(void);
char* tmpnam(char*);
int fclose(FILE*);
int fflush(FILE*);
int fileno(FILE*);
void setbuf(FILE*, char*);
int setvbuf(FILE*, char*, int, size_t);
int fgetc(FILE*);
int fputc(int, FILE*);
char* fgets(char*, int, FILE*);
int fputs(const char*, FILE*);
int getc(FILE*);
int putc(int, FILE*);
int getchar(void);
int putchar(int);
int puts(const char*);
int ungetc(int, FILE*);
size_t fread(void*, size_t, size_t, FILE*);
size_t fwrite(const void*, size_t, size_t, FILE*);
int fseek(FILE*, long, int);
int fseeko(FILE*, off_t, int);
long ftell(FILE*);
off_t ftello(FILE*);
int fgetpos(FILE*, fpos_t*);
int fsetpos(FILE*, const fpos_t*);
void rewind(FILE*);
void clearerr(FILE*);
int feof(FILE*);
int ferror(FILE*);
void perror(const char*);
int remove(const char*);
int rename(const char*, const char*);
int printf(const char*, ...);
int fprintf(FILE*, const char*, ...);
int sprintf(char*, const char*, ...);
int snprintf(char*, size_t, const char*, ...);
int asprintf(char**, const char*, ...);
int scanf(const char*, ...);
int fscanf(FILE*, const char*, ...);
int sscanf(const char*, const char*, ...);
int vprintf(const char*, va_list);
int vfprintf(FILE*, const char*, va_list);
int vsprintf(char*, const char*, va_list);
int vsnprintf(char*, size_t, const char*, va_list);
int vasprintf(char**, const char*, va_list);
int vscanf(const char*, va_list);
int vfscanf(FILE*, const char*, va_list);
int vsscanf(const char*, const char*, va_list);
DARWIN_END
