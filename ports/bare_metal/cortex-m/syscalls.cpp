// SPDX-License-Identifier: MIT
// The C library's system calls, over semihosting.
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>

#include "ports/bare_metal/board.hpp"
#include "ports/bare_metal/semihost.hpp"

extern "C" {

int _write(int file, const void* bytes, size_t count);
int _read(int file, void* bytes, size_t count);
int _fstat(int file, struct stat* status);
int _isatty(int file);
int _close(int file);
int _lseek(int file, int offset, int origin);
int _getpid();
int _kill(int process, int signal);
void* _sbrk(ptrdiff_t bytes);
[[noreturn]] void _exit(int status);

}  // extern "C"

namespace {

using nnlib::semihost::Operation;
using nnlib::semihost::Stream;

int transfer(Operation operation, int file, const void* bytes, size_t count) {
  const intptr_t left =
      file < 0 || file > nnlib::semihost::kError
          ? -1
          : nnlib::semihost::transfer(operation, static_cast<Stream>(file), bytes, count);
  if (left < 0) {
    errno = EBADF;
    return -1;
  }
  return static_cast<int>(count) - static_cast<int>(left);
}

}  // namespace

int _write(int file, const void* bytes, size_t count) {
  return transfer(nnlib::semihost::kWrite, file, bytes, count);
}

int _read(int file, void* bytes, size_t count) {
  return transfer(nnlib::semihost::kRead, file, bytes, count);
}

// All files are the console.
int _fstat(int, struct stat* status) {
  status->st_mode = S_IFCHR;
  status->st_blksize = 0;
  return 0;
}
int _isatty(int) {
  return 1;
}
int _close(int) {
  return 0;
}
int _lseek(int, int, int) {
  return 0;
}

int _getpid() {
  return 1;
}

// abort() ends here.
int _kill(int, int) {
  nnlib::board::leave(nnlib::board::kAbortStatus);
}

void* _sbrk(ptrdiff_t bytes) {
  return nnlib::board::take_heap(bytes);
}

void _exit(int status) {
  nnlib::board::leave(status);
}
