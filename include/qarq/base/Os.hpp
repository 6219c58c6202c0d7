// The operating-system seam.
//
// Every call of the libraries into the OS for files, memory, time, shared
// memory and the environment goes through this table, so that a test can
// make any one of them fail (no memory, open fails, short read, seek fails)
// and check that the failure path does what it promises.
//
// Ownership: the table is process-wide and lives for the process.
// Threads: the table is read without a lock. Replace entries only while no
// other thread calls into the libraries (tests do it around single-threaded
// code, through ScopedOsCall).
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdio>
#include <ctime>

#include "qarq/export.hpp"

namespace qarq::os {

struct Calls {
    // descriptors
    int (*open)(const char* path, int flags, mode_t mode);
    int (*close)(int fd);
    ssize_t (*read)(int fd, void* buffer, size_t count);
    ssize_t (*write)(int fd, const void* buffer, size_t count);
    off_t (*lseek)(int fd, off_t offset, int whence);
    int (*fstat)(int fd, struct stat* st);
    int (*ftruncate)(int fd, off_t length);
    int (*fsync)(int fd);
    // paths
    int (*stat)(const char* path, struct stat* st);
    int (*rename)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*mkdir)(const char* path, mode_t mode);
    // streams
    FILE* (*fopen)(const char* path, const char* mode);
    int (*fclose)(FILE* file);
    size_t (*fread)(void* buffer, size_t size, size_t count, FILE* file);
    size_t (*fwrite)(const void* buffer, size_t size, size_t count, FILE* file);
    int (*fseek)(FILE* file, long offset, int whence);
    long (*ftell)(FILE* file);
    // memory
    void* (*malloc)(size_t size);
    void* (*realloc)(void* block, size_t size);
    void (*free)(void* block);
    // shared memory
    int (*shm_open)(const char* name, int flags, mode_t mode);
    int (*shm_unlink)(const char* name);
    void* (*mmap)(void* address, size_t length, int protection, int flags, int fd, off_t offset);
    int (*munmap)(void* address, size_t length);
    // time and environment
    int (*clock_gettime)(clockid_t clock, struct timespec* now);
    char* (*getenv)(const char* name);
    // added for the robust mutex layer and log roll-over
    int (*fchmod)(int fd, mode_t mode);
    /// rename(2) that fails with EEXIST instead of replacing an existing `to`.
    int (*renameNoReplace)(const char* from, const char* to);
    DIR* (*opendir)(const char* path);
    struct dirent* (*readdir)(DIR* dir);
    int (*closedir)(DIR* dir);
};

/// The live table: what the libraries call.
QARQ_API Calls& calls();

/// The real calls, for restoring an entry or delegating to it.
QARQ_API const Calls& realCalls();

/// Replaces one entry of the table for the life of the object and restores
/// the previous one afterwards.
template <typename Fn>
class ScopedOsCall {
public:
    ScopedOsCall(Fn Calls::*member, Fn replacement)
        : member_(member), saved_(calls().*member) {
        calls().*member = replacement;
    }
    ~ScopedOsCall() { calls().*member_ = saved_; }
    ScopedOsCall(const ScopedOsCall&) = delete;
    ScopedOsCall& operator=(const ScopedOsCall&) = delete;

private:
    Fn Calls::*member_;
    Fn saved_;
};

template <typename Fn>
ScopedOsCall(Fn Calls::*, Fn) -> ScopedOsCall<Fn>;

}  // namespace qarq::os
