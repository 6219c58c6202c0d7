#include "qarq/base/Os.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace qarq::os {
namespace {

int realOpen(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int realStat(const char* path, struct stat* st) { return ::stat(path, st); }
int realFstat(int fd, struct stat* st) { return ::fstat(fd, st); }

const Calls kReal = {
    realOpen,    ::close,  ::read,   ::write,  ::lseek,  realFstat,    ::ftruncate,
    ::fsync,     realStat, ::rename, ::unlink, ::mkdir,  ::fopen,      ::fclose,
    ::fread,     ::fwrite, ::fseek,  ::ftell,  ::malloc, ::realloc,    ::free,
    ::shm_open,  ::shm_unlink,       ::mmap,   ::munmap, ::clock_gettime, ::getenv,
};

Calls gLive = kReal;

}  // namespace

Calls& calls() { return gLive; }
const Calls& realCalls() { return kReal; }

}  // namespace qarq::os
