/* Preloaded into a program, makes one chosen call of it fail, as a bad disk, a full one or a lack
 * of memory would:
 *
 *   ORVDIFF_FAULT=CALL:N:ERRNO:once|lasts  the N-th call of this kind (from 1) fails with this
 *                                          errno; "lasts": so does every later one
 *   ORVDIFF_FAULT_REPORT=FILE              gets "hit MODULE OFFSET" for each caller of the first
 *                                          call that failed; without ORVDIFF_FAULT "call KIND
 *                                          PLACE" for each call: a number for where it comes from
 *
 * Counting starts with main(): what the loader and constructors of other libraries do is not ours.
 * Programs that this one starts run undisturbed.
 *
 * Only calls through the dynamic symbol table can be caught:
 * - System calls of the program, its library and libstdc++, whose file streams do without stdio's
 *   buffers: at the call itself.
 * - What stdio does inside libc: at the stdio function, which then behaves as if its system call
 *   had failed (an error flag is raised, buffered bytes of a stream that fails to close are lost).
 * - Allocations: at malloc and its kin. operator new of libstdc++, ICU, Xerces and libc itself all
 *   come through here.
 * Not caught: files that libc reads on its own (time zones, locales), and what is mapped. */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

enum Kind { OPEN, READ, SEEK, WRITE, CLOSE, STAT, NAME, SPAWN, ALLOC, KINDS };
static const char* const kKindNames[KINDS] = {"open", "read", "seek",  "write", "close",
                                              "stat", "name", "spawn", "alloc"};

static struct {
  enum Kind kind;
  unsigned long at; /* 0: nothing fails */
  int error;
  bool lasts;
} plan;
static const char* report;
static bool armed; /* main() has started */
static bool busy;  /* in this file's own calls, which are not counted */
static unsigned long calls[KINDS];

/* With bare system calls, which do not disturb what is counted. */
static void appendToReport(const char* text, int length) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const long file = syscall(SYS_openat, AT_FDCWD, report, flags, 0666);
  if (file >= 0 && length > 0) {
    syscall(SYS_write, file, text, (size_t)length);
  }
  syscall(SYS_close, file);
}

static bool isOurs(const Dl_info* module) {
  const char* const slash = strrchr(module->dli_fname, '/');
  const char* const name = slash != NULL ? slash + 1 : module->dli_fname;
  return strcmp(name, "orvdiff") == 0 || strncmp(name, "liborvdiff.", 11) == 0;
}

/* The innermost callers that are of this project. */
static void reportFailure(void) {
  enum { kDepth = 96, kMost = 8 };
  void* stack[kDepth];
  char line[4096];
  appendToReport(line, snprintf(line, sizeof line, "hit\n"));
  const int depth = backtrace(stack, kDepth);
  for (int i = 0, count = 0; i < depth && count < kMost; ++i) {
    Dl_info module;
    if (dladdr(stack[i], &module) != 0 && isOurs(&module)) {
      const size_t offset = (size_t)((char*)stack[i] - (char*)module.dli_fbase);
      appendToReport(line, snprintf(line, sizeof line, "hit %s %zx\n", module.dli_fname,
                                    offset - 1)); /* the call, not what it returns to */
      ++count;
    }
  }
}

/* A place is told by the innermost callers, of any library. More of them take too long to find. */
static void reportCall(enum Kind kind) {
  void* stack[12];
  char line[64];
  const int depth = backtrace(stack, 12);
  size_t place = 0;
  for (int i = 0; i < depth; ++i) {
    place = place * 1000003 + (size_t)stack[i];
  }
  appendToReport(line, snprintf(line, sizeof line, "call %s %zx\n", kKindNames[kind], place));
}

/* Counts a call; whether it is to fail. errno then says why. */
static bool fails(enum Kind kind) {
  if (!armed || busy) {
    return false;
  }
  const unsigned long n = ++calls[kind];
  if (plan.at == 0 || (kind == plan.kind && n == plan.at)) {
    busy = true;
    plan.at == 0 ? reportCall(kind) : reportFailure();
    busy = false;
  }
  /* A disk that is full takes a part of the first write, and nothing of the next. */
  const unsigned long last = plan.at + (kind == WRITE && plan.error == ENOSPC ? 1 : 0);
  if (kind != plan.kind || plan.at == 0 || n < plan.at || (n > last && !plan.lasts)) {
    return false;
  }
  errno = plan.error;
  return true;
}

/* How many bytes of a failing write are taken all the same. */
static size_t takenOf(size_t size) {
  return plan.error == ENOSPC && calls[WRITE] == plan.at ? size / 2 : 0;
}

static void raiseErrorFlag(FILE* stream) {
  stream->_flags |= 0x20; /* glibc's _IO_ERR_SEEN */
}

static void* next(const char* name) {
  const bool outer = busy;
  busy = true; /* the search may allocate */
  void* const found = dlsym(RTLD_NEXT, name);
  busy = outer;
  return found;
}

/* Declares `real`, the function that is interposed. */
#define REAL(name)                \
  static __typeof__(&name) real;  \
  if (real == NULL) {             \
    *(void**)&real = next(#name); \
  }

/* A function that fails in one way, with nothing else to take care of. */
#define SIMPLE(kind, type, failure, name, parameters, arguments) \
  type name parameters {                                         \
    REAL(name)                                                   \
    return fails(kind) ? (failure) : real arguments;             \
  }

/* The same for reading or writing through a stream. */
#define STREAMED(kind, type, failure, name, parameters, arguments) \
  type name parameters {                                           \
    REAL(name)                                                     \
    if (fails(kind)) {                                             \
      raiseErrorFlag(stream);                                      \
      return failure;                                              \
    }                                                              \
    return real arguments;                                         \
  }

/* open and its kin take a mode when they may create the file. */
#define OPENING(name, parameters, ...)                 \
  int name parameters {                                \
    REAL(name)                                         \
    mode_t mode = 0;                                   \
    if ((flags & (O_CREAT | __O_TMPFILE)) != 0) {      \
      va_list more;                                    \
      va_start(more, flags);                           \
      mode = va_arg(more, mode_t);                     \
      va_end(more);                                    \
    }                                                  \
    return fails(OPEN) ? -1 : real(__VA_ARGS__, mode); \
  }

#undef putc
#undef getc

OPENING(open, (const char* path, int flags, ...), path, flags)
OPENING(open64, (const char* path, int flags, ...), path, flags)
OPENING(openat, (int at, const char* path, int flags, ...), at, path, flags)
OPENING(openat64, (int at, const char* path, int flags, ...), at, path, flags)
int __open_2(const char* path, int flags) {
  return open(path, flags);
}
int __open64_2(const char* path, int flags) {
  return open64(path, flags);
}
SIMPLE(OPEN, int, -1, creat, (const char* path, mode_t mode), (path, mode))
SIMPLE(OPEN, int, -1, mkstemp, (char* name), (name))
SIMPLE(OPEN, int, -1, mkstemp64, (char* name), (name))
SIMPLE(OPEN, int, -1, mkostemp, (char* name, int flags), (name, flags))
SIMPLE(OPEN, int, -1, mkostemp64, (char* name, int flags), (name, flags))
SIMPLE(OPEN, int, -1, dup, (int file), (file))
SIMPLE(OPEN, int, -1, dup2, (int file, int as), (file, as))
SIMPLE(OPEN, int, -1, dup3, (int file, int as, int flags), (file, as, flags))
SIMPLE(OPEN, FILE*, NULL, fopen, (const char* path, const char* mode), (path, mode))
SIMPLE(OPEN, FILE*, NULL, fopen64, (const char* path, const char* mode), (path, mode))
SIMPLE(OPEN, FILE*, NULL, fdopen, (int file, const char* mode), (file, mode))
SIMPLE(OPEN, DIR*, NULL, opendir, (const char* path), (path))
SIMPLE(OPEN, DIR*, NULL, fdopendir, (int file), (file))

SIMPLE(READ, ssize_t, -1, read, (int file, void* to, size_t size), (file, to, size))
SIMPLE(READ, ssize_t, -1, pread, (int file, void* to, size_t size, off_t at), (file, to, size, at))
SIMPLE(READ, ssize_t, -1, pread64, (int file, void* to, size_t size, off64_t at),
       (file, to, size, at))
SIMPLE(READ, ssize_t, -1, readv, (int file, const struct iovec* to, int count), (file, to, count))
SIMPLE(READ, struct dirent*, NULL, readdir, (DIR * folder), (folder))
SIMPLE(READ, struct dirent64*, NULL, readdir64, (DIR * folder), (folder))
STREAMED(READ, size_t, 0, fread, (void* to, size_t size, size_t count, FILE* stream),
         (to, size, count, stream))
STREAMED(READ, int, EOF, getc, (FILE * stream), (stream))
STREAMED(READ, int, EOF, fgetc, (FILE * stream), (stream))
STREAMED(READ, char*, NULL, fgets, (char* to, int size, FILE* stream), (to, size, stream))

SIMPLE(SEEK, off_t, -1, lseek, (int file, off_t to, int from), (file, to, from))
SIMPLE(SEEK, off64_t, -1, lseek64, (int file, off64_t to, int from), (file, to, from))
SIMPLE(SEEK, int, -1, fseek, (FILE * stream, long to, int from), (stream, to, from))
SIMPLE(SEEK, int, -1, fseeko, (FILE * stream, off_t to, int from), (stream, to, from))
SIMPLE(SEEK, int, -1, fseeko64, (FILE * stream, off64_t to, int from), (stream, to, from))
SIMPLE(SEEK, long, -1, ftell, (FILE * stream), (stream))
SIMPLE(SEEK, off_t, -1, ftello, (FILE * stream), (stream))
SIMPLE(SEEK, off64_t, -1, ftello64, (FILE * stream), (stream))

ssize_t write(int file, const void* from, size_t size) {
  REAL(write)
  if (!fails(WRITE)) {
    return real(file, from, size);
  }
  const size_t taken = takenOf(size);
  return taken > 0 ? real(file, from, taken) : -1;
}
ssize_t writev(int file, const struct iovec* from, int count) {
  REAL(writev)
  static __typeof__(&write) real_write;
  if (real_write == NULL) {
    *(void**)&real_write = next("write");
  }
  if (!fails(WRITE)) {
    return real(file, from, count);
  }
  const size_t taken = count > 0 ? takenOf(from->iov_len) : 0;
  return taken > 0 ? real_write(file, from->iov_base, taken) : -1;
}
size_t fwrite(const void* from, size_t size, size_t count, FILE* stream) {
  REAL(fwrite)
  if (!fails(WRITE)) {
    return real(from, size, count, stream);
  }
  const size_t taken = takenOf(count);
  const size_t done = taken > 0 ? real(from, size, taken, stream) : 0;
  raiseErrorFlag(stream);
  errno = plan.error;
  return done;
}
SIMPLE(WRITE, ssize_t, -1, pwrite, (int file, const void* from, size_t size, off_t at),
       (file, from, size, at))
SIMPLE(WRITE, ssize_t, -1, pwrite64, (int file, const void* from, size_t size, off64_t at),
       (file, from, size, at))
SIMPLE(WRITE, ssize_t, -1, sendfile, (int to, int from, off_t* at, size_t size),
       (to, from, at, size))
SIMPLE(WRITE, int, -1, fsync, (int file), (file))
SIMPLE(WRITE, int, -1, fdatasync, (int file), (file))
SIMPLE(WRITE, int, -1, ftruncate, (int file, off_t size), (file, size))
SIMPLE(WRITE, int, -1, ftruncate64, (int file, off64_t size), (file, size))
STREAMED(WRITE, int, EOF, fputs, (const char* text, FILE* stream), (text, stream))
STREAMED(WRITE, int, EOF, fputc, (int character, FILE* stream), (character, stream))
STREAMED(WRITE, int, EOF, putc, (int character, FILE* stream), (character, stream))
int fflush(FILE* stream) {
  REAL(fflush)
  if (!fails(WRITE)) {
    return real(stream);
  }
  if (stream != NULL) {
    raiseErrorFlag(stream);
  }
  return EOF;
}

/* What fails to close is closed all the same, as Linux has it. */
int close(int file) {
  REAL(close)
  if (!fails(CLOSE)) {
    return real(file);
  }
  real(file);
  errno = plan.error;
  return -1;
}
int closedir(DIR* folder) {
  REAL(closedir)
  if (!fails(CLOSE)) {
    return real(folder);
  }
  real(folder);
  errno = plan.error;
  return -1;
}
int fclose(FILE* stream) {
  REAL(fclose)
  if (!fails(CLOSE)) {
    return real(stream);
  }
  __fpurge(stream);
  real(stream);
  errno = plan.error;
  return EOF;
}

SIMPLE(STAT, int, -1, stat, (const char* path, struct stat* to), (path, to))
SIMPLE(STAT, int, -1, stat64, (const char* path, struct stat64* to), (path, to))
SIMPLE(STAT, int, -1, lstat, (const char* path, struct stat* to), (path, to))
SIMPLE(STAT, int, -1, lstat64, (const char* path, struct stat64* to), (path, to))
SIMPLE(STAT, int, -1, fstat, (int file, struct stat* to), (file, to))
SIMPLE(STAT, int, -1, fstat64, (int file, struct stat64* to), (file, to))
SIMPLE(STAT, int, -1, fstatat, (int at, const char* path, struct stat* to, int flags),
       (at, path, to, flags))
SIMPLE(STAT, int, -1, fstatat64, (int at, const char* path, struct stat64* to, int flags),
       (at, path, to, flags))
SIMPLE(STAT, int, -1, access, (const char* path, int mode), (path, mode))
SIMPLE(STAT, int, -1, faccessat, (int at, const char* path, int mode, int flags),
       (at, path, mode, flags))
SIMPLE(STAT, char*, NULL, realpath, (const char* path, char* to), (path, to))
SIMPLE(STAT, char*, NULL, getcwd, (char* to, size_t size), (to, size))

SIMPLE(NAME, int, -1, rename, (const char* from, const char* to), (from, to))
SIMPLE(NAME, int, -1, renameat, (int a, const char* from, int b, const char* to), (a, from, b, to))
SIMPLE(NAME, int, -1, link, (const char* from, const char* to), (from, to))
SIMPLE(NAME, int, -1, unlink, (const char* path), (path))
SIMPLE(NAME, int, -1, unlinkat, (int at, const char* path, int flags), (at, path, flags))
SIMPLE(NAME, int, -1, remove, (const char* path), (path))
SIMPLE(NAME, int, -1, mkdir, (const char* path, mode_t mode), (path, mode))
SIMPLE(NAME, int, -1, chdir, (const char* path), (path))

int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const arguments[],
                char* const environment[]) {
  REAL(posix_spawn)
  return fails(SPAWN) ? errno : real(child, path, actions, attributes, arguments, environment);
}
SIMPLE(SPAWN, pid_t, -1, waitpid, (pid_t child, int* status, int options), (child, status, options))

/* glibc's own names: looking the others up would allocate. */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) {
  return fails(ALLOC) ? NULL : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  return fails(ALLOC) ? NULL : __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
  return fails(ALLOC) ? NULL : __libc_realloc(block, size);
}
void* aligned_alloc(size_t alignment, size_t size) {
  return fails(ALLOC) ? NULL : __libc_memalign(alignment, size);
}
void* memalign(size_t alignment, size_t size) {
  return fails(ALLOC) ? NULL : __libc_memalign(alignment, size);
}
int posix_memalign(void** block, size_t alignment, size_t size) {
  void* const found = fails(ALLOC) ? NULL : __libc_memalign(alignment, size);
  if (found == NULL) {
    return ENOMEM;
  }
  *block = found;
  return 0;
}

static void readPlan(const char* text) {
  char kind[16];
  char how[16];
  if (sscanf(text, "%15[a-z]:%lu:%d:%15s", kind, &plan.at, &plan.error, how) != 4) {
    abort(); /* a run without a fault must not pass for one that stood it */
  }
  plan.lasts = strcmp(how, "lasts") == 0;
  while (strcmp(kKindNames[plan.kind], kind) != 0) {
    if (++plan.kind == KINDS) {
      abort();
    }
  }
}

__attribute__((constructor)) static void prepare(void) {
  const char* const wanted = getenv("ORVDIFF_FAULT");
  if (wanted != NULL) {
    readPlan(wanted);
  }
  const char* const file = getenv("ORVDIFF_FAULT_REPORT");
  report = strdup(file != NULL ? file : "/dev/null");
  unsetenv("ORVDIFF_FAULT"); /* children are not to be disturbed */
  unsetenv("ORVDIFF_FAULT_REPORT");
  unsetenv("LD_PRELOAD");
  void* warmUp[1];
  backtrace(warmUp, 1); /* its first call allocates */
}

typedef int Main(int, char**, char**);
static Main* programsMain;

static int countedMain(int count, char** arguments, char** environment) {
  armed = true;
  return programsMain(count, arguments, environment);
}

int __libc_start_main(Main* main, int count, char** arguments, void (*init)(void),
                      void (*fini)(void), void (*loaderFini)(void), void* stackEnd) {
  typedef int Start(Main*, int, char**, void (*)(void), void (*)(void), void (*)(void), void*);
  Start* start;
  *(void**)&start = next("__libc_start_main");
  programsMain = main;
  return start(countedMain, count, arguments, init, fini, loaderFini, stackEnd);
}
