#include "qarq/base/Os.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace qarq::os {
namespace {

int realOpen(const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); }
int realStat(const char* path, struct stat* st) { return ::stat(path, st); }
int realFstat(int fd, struct stat* st) { return ::fstat(fd, st); }

// Never replaces an existing target, so two roll-overs in the same second can
// not overwrite each other's archive. File systems without RENAME_NOREPLACE
// get the link/unlink form, which is just as exclusive; only one without hard
// links falls back to test-then-rename.
int realRenameNoReplace(const char* from, const char* to) {
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return -1;
    if (::link(from, to) == 0) return ::unlink(from);
    if (errno != EPERM && errno != EOPNOTSUPP) return -1;
    struct stat st;
    if (::lstat(to, &st) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from, to);
}

const Calls kReal = {
    realOpen,    ::close,  ::read,   ::write,  ::lseek,  realFstat,    ::ftruncate,
    ::fsync,     realStat, ::rename, ::unlink, ::mkdir,  ::fopen,      ::fclose,
    ::fread,     ::fwrite, ::fseek,  ::ftell,  ::malloc, ::realloc,    ::free,
    ::shm_open,  ::shm_unlink,       ::mmap,   ::munmap, ::clock_gettime, ::getenv,
    ::fchmod,    realRenameNoReplace, ::opendir, ::readdir, ::closedir,
};

Calls gLive = kReal;

}  // namespace

Calls& calls() { return gLive; }
const Calls& realCalls() { return kReal; }

}  // namespace qarq::os
