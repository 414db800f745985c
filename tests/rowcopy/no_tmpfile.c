/* Preloaded: a file system without files that have no name. Files are large ones, so that the
 * symbol is the one that rowcopy calls. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <sys/syscall.h>
#include <unistd.h>

int open(const char* path, int flags, ...) {
  va_list arguments;
  mode_t mode;
  va_start(arguments, flags);
  mode = va_arg(arguments, mode_t);
  va_end(arguments);
  if ((flags & O_TMPFILE) == O_TMPFILE) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return (int)syscall(SYS_openat, AT_FDCWD, path, flags | O_LARGEFILE, mode);
}
