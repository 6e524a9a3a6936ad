/* Preloaded into a program, makes one chosen call fail, as a bad disk, a full disk or a lack of
 * memory would:
 *
 *   ORVDIFF_FAULT=CALL:N:ERRNO:once|lasts  the N-th call of this kind (from 1) fails with this
 *                                          errno; with "lasts", so does every later one
 *   ORVDIFF_FAULT=kill:N                   the program is killed before its own N-th call of any
 *                                          kind but allocations
 *   ORVDIFF_FAULT_REPORT=FILE              receives "hit MODULE OFFSET" for each caller of the
 *                                          first failing call; without ORVDIFF_FAULT, "call KIND
 *                                          PLACE" for each call, PLACE being a hash of its callers
 *
 * Counting starts at main(), not in the loader or in constructors of other libraries. The processes
 * that the program forks are counted together, as calls "worker-open" and so on, apart from its own
 * calls: so numbers stay the same however the processes take turns. "Once" hits one process only.
 * Programs that it executes run undisturbed.
 *
 * Only calls through the dynamic symbol table can be caught:
 * - system calls of the program, its library and libstdc++, whose file streams bypass stdio's
 *   buffers: at the call itself;
 * - what stdio does inside libc: at the stdio function, which then behaves as if its system call
 * had failed (sets the error flag, loses the buffered bytes of a stream that fails to close);
 * - allocations: at malloc and its relatives, which operator new, ICU, Xerces and libc all use.
 * Not caught: files that libc reads by itself (time zones, locales), and dup2 onto a standard
 * stream, which cannot run out of anything. */
#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdio_ext.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

enum Kind { OPEN, READ, SEEK, WRITE, CLOSE, STAT, NAME, SPAWN, ALLOC, KINDS };
static const char* const kKindNames[KINDS] = {"open", "read", "seek",  "write", "close",
                                              "stat", "name", "spawn", "alloc"};

static const char kOfWorkers[] = "worker-";

static struct {
  enum Kind kind;
  bool inWorkers;
  unsigned long at; /* 0: nothing fails */
  int error;
  bool lasts;
} plan;
static unsigned long killsAt; /* 0: the program lives */
static unsigned long systemCalls; /* of the program itself, counted only to kill it */
static const char* report;
static bool armed;           /* main() has started */
static bool busy;            /* in this file's own calls, which are not counted */
static bool isWorker;        /* a process that the program has forked */
static unsigned long* calls; /* by kind, then those of workers, in memory that processes share */
static unsigned long number; /* of the call that was counted last */

/* By raw system calls, so that reporting does not disturb the counts. */
static void appendToReport(const char* text, int length) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const long file = syscall(SYS_openat, AT_FDCWD, report, flags, 0666);
  syscall(SYS_write, file, text, (size_t)length);
  syscall(SYS_close, file);
}

static bool isOurs(const Dl_info* module) {
  const char* const slash = strrchr(module->dli_fname, '/');
  const char* const name = slash != NULL ? slash + 1 : module->dli_fname;
  return strcmp(name, "orvdiff") == 0 || strncmp(name, "liborvdiff.", 11) == 0;
}

/* The innermost callers that belong to this project. */
static void reportFailure(void) {
  enum { kDepth = 96, kMost = 16 };
  void* stack[kDepth];
  char line[4096];
  appendToReport("hit\n", 4);
  const int depth = backtrace(stack, kDepth);
  for (int i = 0, count = 0; i < depth && count < kMost; ++i) {
    Dl_info module;
    if (dladdr(stack[i], &module) != 0 && isOurs(&module)) {
      const size_t offset = (size_t)((char*)stack[i] - (char*)module.dli_fbase);
      appendToReport(line, snprintf(line, sizeof line, "hit %s %zx\n", module.dli_fname,
                                    offset - 1)); /* the call rather than its return address */
      ++count;
    }
  }
}

/* Hashes the innermost callers, of any library. Deeper stacks take too long. */
static void reportCall(enum Kind kind) {
  void* stack[12];
  char line[64];
  const int depth = backtrace(stack, 12);
  size_t place = 0;
  for (int i = 0; i < depth; ++i) {
    place = place * 1000003 + (size_t)stack[i];
  }
  appendToReport(line, snprintf(line, sizeof line, "call %s%s %zx\n", isWorker ? kOfWorkers : "",
                                kKindNames[kind], place));
}

/* Counts a call and decides whether it fails; errno then says why. */
static bool fails(enum Kind kind) {
  if (!armed || busy) {
    return false;
  }
  if (killsAt != 0 && kind != ALLOC && !isWorker && ++systemCalls == killsAt) {
    kill(getpid(), SIGKILL);
  }
  number = __atomic_add_fetch(&calls[kind + (isWorker ? KINDS : 0)], 1, __ATOMIC_RELAXED);
  const bool isPlanned = kind == plan.kind && isWorker == plan.inWorkers;
  if (plan.at == 0 || (isPlanned && number == plan.at)) {
    busy = true;
    plan.at == 0 ? reportCall(kind) : reportFailure();
    busy = false;
  }
  /* A full disk takes part of the first write and nothing of the next. */
  const unsigned long last = plan.at + (kind == WRITE && plan.error == ENOSPC ? 1 : 0);
  if (!isPlanned || plan.at == 0 || number < plan.at || (number > last && !plan.lasts)) {
    return false;
  }
  errno = plan.error;
  return true;
}

/* How much of a failing write is taken all the same. */
static size_t takenOf(size_t size) {
  return plan.error == ENOSPC && number == plan.at ? size / 2 : 0;
}

static void raiseErrorFlag(FILE* stream) {
  stream->_flags |= 0x20; /* glibc's _IO_ERR_SEEN */
}

static void* next(const char* name) {
  const bool outer = busy;
  busy = true; /* the lookup may allocate */
  void* const found = dlsym(RTLD_NEXT, name);
  busy = outer;
  return found;
}

/* Declares `real`, the function that is replaced. */
#define REAL(name)                \
  static __typeof__(&name) real;  \
  if (real == NULL) {             \
    *(void**)&real = next(#name); \
  }

/* A function that only returns its failure. */
#define SIMPLE(kind, type, failure, name, parameters, arguments) \
  type name parameters {                                         \
    REAL(name)                                                   \
    return fails(kind) ? (failure) : real arguments;             \
  }

/* One with a twin for large files, which takes the same types where off_t has 64 bits. */
#define TWINS(kind, type, failure, name, parameters, arguments) \
  SIMPLE(kind, type, failure, name, parameters, arguments)      \
  SIMPLE(kind, type, failure, name##64, parameters, arguments)

/* One that reads or writes through a stream. */
#define STREAMED(kind, type, failure, name, parameters, arguments) \
  type name parameters {                                           \
    REAL(name)                                                     \
    const bool isToFail = fails(kind);                             \
    if (isToFail && stream != NULL) {                              \
      raiseErrorFlag(stream);                                      \
    }                                                              \
    return isToFail ? (failure) : real arguments;                  \
  }

/* One that closes; on Linux whatever fails to close is closed all the same. */
#define CLOSING(failure, name, parameters, arguments, prepare) \
  int name parameters {                                        \
    REAL(name)                                                 \
    if (!fails(CLOSE)) {                                       \
      return real arguments;                                   \
    }                                                          \
    prepare;                                                   \
    real arguments;                                            \
    errno = plan.error;                                        \
    return failure;                                            \
  }

/* open and its relatives take a mode when they may create the file. */
#define OPENING(name, parameters, ...)                 \
  int name parameters {                                \
    REAL(name)                                         \
    va_list more;                                      \
    va_start(more, flags);                             \
    const bool creates = (flags & O_CREAT) != 0;       \
    const mode_t mode = creates ? va_arg(more, mode_t) : 0; \
    va_end(more);                                      \
    return fails(OPEN) ? -1 : real(__VA_ARGS__, mode); \
  }

#undef putc
#undef getc

/* clang-format off */
OPENING(open, (const char* path, int flags, ...), path, flags)
OPENING(open64, (const char* path, int flags, ...), path, flags)
OPENING(openat, (int at, const char* path, int flags, ...), at, path, flags)
SIMPLE(OPEN, int, -1, mkostemp, (char* name, int flags), (name, flags))
SIMPLE(OPEN, int, -1, dup, (int file), (file))
SIMPLE(OPEN, int, -1, memfd_create, (const char* name, unsigned flags), (name, flags))
SIMPLE(OPEN, int, -1, flock, (int file, int operation), (file, operation))
int fcntl(int file, int command, ...) {
  REAL(fcntl)
  va_list more;
  va_start(more, command);
  void* const argument = va_arg(more, void*);
  va_end(more);
  return command == F_DUPFD_CLOEXEC && fails(OPEN) ? -1 : real(file, command, argument);
}
SIMPLE(OPEN, int, -1, pipe, (int ends[2]), (ends))
SIMPLE(OPEN, int, -1, pipe2, (int ends[2], int flags), (ends, flags))
TWINS(OPEN, FILE*, NULL, fopen, (const char* path, const char* mode), (path, mode))
SIMPLE(OPEN, FILE*, NULL, fdopen, (int file, const char* mode), (file, mode))
SIMPLE(OPEN, DIR*, NULL, opendir, (const char* path), (path))
SIMPLE(OPEN, DIR*, NULL, fdopendir, (int file), (file))

SIMPLE(READ, ssize_t, -1, read, (int file, void* to, size_t size), (file, to, size))
SIMPLE(READ, ssize_t, -1, pread, (int file, void* to, size_t size, off_t at), (file, to, size, at))
SIMPLE(READ, struct dirent*, NULL, readdir, (DIR* folder), (folder))
STREAMED(READ, size_t, 0, fread, (void* to, size_t size, size_t n, FILE* stream), (to, size, n, stream))
STREAMED(READ, int, EOF, getc, (FILE* stream), (stream))

TWINS(SEEK, off_t, -1, lseek, (int file, off_t to, int from), (file, to, from))
SIMPLE(SEEK, int, -1, fseek, (FILE* stream, long to, int from), (stream, to, from))
TWINS(SEEK, int, -1, fseeko, (FILE* stream, off_t to, int from), (stream, to, from))
SIMPLE(SEEK, long, -1, ftell, (FILE* stream), (stream))
TWINS(SEEK, off_t, -1, ftello, (FILE* stream), (stream))

ssize_t write(int file, const void* from, size_t size) {
  REAL(write)
  if (!fails(WRITE)) { return real(file, from, size); }
  const size_t taken = takenOf(size);
  return taken > 0 ? syscall(SYS_write, file, from, taken) : -1;
}
ssize_t writev(int file, const struct iovec* from, int count) {
  REAL(writev)
  if (!fails(WRITE)) { return real(file, from, count); }
  const size_t taken = takenOf(from->iov_len);
  return taken > 0 ? syscall(SYS_write, file, from->iov_base, taken) : -1;
}
size_t fwrite(const void* from, size_t size, size_t count, FILE* stream) {
  REAL(fwrite)
  if (!fails(WRITE)) { return real(from, size, count, stream); }
  const size_t taken = takenOf(count);
  const size_t done = taken > 0 ? real(from, size, taken, stream) : 0;
  raiseErrorFlag(stream);
  errno = plan.error;
  return done;
}
SIMPLE(WRITE, ssize_t, -1, sendfile, (int to, int from, off_t* at, size_t size), (to, from, at, size))
SIMPLE(WRITE, int, -1, fsync, (int file), (file))
SIMPLE(WRITE, int, -1, ftruncate, (int file, off_t size), (file, size))
STREAMED(WRITE, int, EOF, fputs, (const char* text, FILE* stream), (text, stream))
STREAMED(WRITE, int, EOF, fputc, (int character, FILE* stream), (character, stream))
STREAMED(WRITE, int, EOF, putc, (int character, FILE* stream), (character, stream))
STREAMED(WRITE, int, EOF, fflush, (FILE* stream), (stream))

CLOSING(-1, close, (int file), (file), )
CLOSING(-1, closedir, (DIR* folder), (folder), )
CLOSING(EOF, fclose, (FILE* stream), (stream), __fpurge(stream))

SIMPLE(STAT, int, -1, stat, (const char* path, struct stat* to), (path, to))
SIMPLE(STAT, int, -1, lstat, (const char* path, struct stat* to), (path, to))
SIMPLE(STAT, int, -1, fstat, (int file, struct stat* to), (file, to))
SIMPLE(STAT, int, -1, fstat64, (int file, struct stat64* to), (file, to))
SIMPLE(STAT, int, -1, access, (const char* path, int mode), (path, mode))
SIMPLE(STAT, char*, NULL, realpath, (const char* path, char* to), (path, to))
SIMPLE(STAT, char*, NULL, getcwd, (char* to, size_t size), (to, size))

SIMPLE(NAME, int, -1, rename, (const char* from, const char* to), (from, to))
SIMPLE(NAME, int, -1, link, (const char* from, const char* to), (from, to))
SIMPLE(NAME, int, -1, unlink, (const char* path), (path))
SIMPLE(NAME, int, -1, unlinkat, (int at, const char* path, int flags), (at, path, flags))
SIMPLE(NAME, int, -1, remove, (const char* path), (path))
SIMPLE(NAME, int, -1, rmdir, (const char* path), (path))
SIMPLE(NAME, int, -1, fchmod, (int file, mode_t mode), (file, mode))
SIMPLE(NAME, int, -1, fchown, (int file, uid_t user, gid_t group), (file, user, group))
SIMPLE(NAME, int, -1, mkdir, (const char* path, mode_t mode), (path, mode))
SIMPLE(NAME, int, -1, chdir, (const char* path), (path))

int posix_spawn(pid_t* child, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const arguments[], char* const environ[]) {
  REAL(posix_spawn)
  return fails(SPAWN) ? errno : real(child, path, actions, attributes, arguments, environ);
}
pid_t fork(void) {
  REAL(fork)
  if (fails(SPAWN)) { return -1; }
  const pid_t process = real();
  isWorker = isWorker || process == 0;
  return process;
}
SIMPLE(SPAWN, int, -1, poll, (struct pollfd* files, nfds_t count, int timeout), (files, count, timeout))
SIMPLE(SPAWN, pid_t, -1, waitpid, (pid_t child, int* status, int options), (child, status, options))

/* glibc's own names, because looking up the others would allocate. */
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void* malloc(size_t size) { return fails(ALLOC) ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return fails(ALLOC) ? NULL : __libc_calloc(count, size); }
void* realloc(void* block, size_t size) { return fails(ALLOC) ? NULL : __libc_realloc(block, size); }
SIMPLE(ALLOC, void*, MAP_FAILED, mmap, (void* at, size_t size, int access, int flags, int file, off_t from), (at, size, access, flags, file, from))
void* aligned_alloc(size_t alignment, size_t size) {
  return fails(ALLOC) ? NULL : __libc_memalign(alignment, size);
}
/* clang-format on */

static void readPlan(const char* text) {
  char name[16];
  char how[16];
  if (sscanf(text, "%15[a-z-]:%lu:%d:%15s", name, &plan.at, &plan.error, how) != 4) {
    abort(); /* a run without its fault must not count as one that survived it */
  }
  plan.lasts = strcmp(how, "lasts") == 0;
  const size_t prefix = strlen(kOfWorkers);
  plan.inWorkers = strncmp(name, kOfWorkers, prefix) == 0;
  const char* const kind = plan.inWorkers ? name + prefix : name;
  while (strcmp(kKindNames[plan.kind], kind) != 0) {
    if (++plan.kind == KINDS) {
      abort();
    }
  }
}

__attribute__((constructor)) static void prepare(void) {
  calls = mmap(NULL, 2 * KINDS * sizeof *calls, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
               -1, 0);
  const char* const wanted = getenv("ORVDIFF_FAULT");
  static const char kKill[] = "kill:";
  if (wanted != NULL && strncmp(wanted, kKill, sizeof kKill - 1) == 0) {
    killsAt = strtoul(wanted + sizeof kKill - 1, NULL, 10);
  } else if (wanted != NULL) {
    readPlan(wanted);
  }
  const char* const file = getenv("ORVDIFF_FAULT_REPORT");
  report = strdup(file != NULL ? file : "/dev/null");
  unsetenv("ORVDIFF_FAULT"); /* programs that it executes run undisturbed */
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
