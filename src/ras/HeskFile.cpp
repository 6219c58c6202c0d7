#include "qarq/ras/HeskFile.hpp"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "RecordWriter.hpp"
#include "qarq/base/Os.hpp"

namespace {

constexpr size_t kMaxName = 128;
constexpr long kDefaultKeep = 10;
constexpr long kMaxKeep = 10000;
// Archives of one second beyond this many are refused rather than searched.
constexpr int kMaxSameSecond = 1000;

std::atomic<bool> gKeepNoted{false};

// A log name becomes part of a path: anything that could leave the log
// directory or hide a file (slashes, "..", a leading dot) is refused.
bool validName(const char* name) {
    if (name == nullptr || *name == '\0' || *name == '.') return false;
    size_t length = strnlen(name, kMaxName + 1);
    if (length > kMaxName) return false;
    for (size_t i = 0; i < length; ++i) {
        unsigned char c = static_cast<unsigned char>(name[i]);
        bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                     c == '.' || c == '_' || c == '-';
        if (!plain) return false;
    }
    return std::strstr(name, "..") == nullptr;
}

long archivesToKeep() {
    const char* text = qarq::os::calls().getenv("QARZ_LOG_KEEP");
    if (text == nullptr || *text == '\0') return kDefaultKeep;
    char* end = nullptr;
    errno = 0;
    long keep = std::strtol(text, &end, 10);
    if (errno == 0 && end != text && *end == '\0' && keep >= 1 && keep <= kMaxKeep) return keep;
    if (!gKeepNoted.exchange(true)) {
        std::string note = "QARZ_LOG_KEEP \"" + std::string(text, strnlen(text, 32)) +
                           "\" is not a number from 1 to 10000; 10 archives are kept";
        qarq::ras::detail::note("HeskOpenRetry", note.c_str());
    }
    return kDefaultKeep;
}

struct Archive {
    std::string stamp;  // YYYYMMDD-HHMMSS
    long sequence;      // the -N, 0 when absent
    std::string file;
};

bool digits(const char* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (p[i] < '0' || p[i] > '9') return false;
    return true;
}

// Recognises exactly `name`.YYYYMMDD-HHMMSS[-N].xml: nothing else in the
// directory is ever deleted.
bool parseArchive(const std::string& name, const char* file, Archive* out) {
    size_t length = std::strlen(file);
    if (length < name.size() + 1 + 15 + 4 || file[name.size()] != '.' ||
        std::strncmp(file, name.c_str(), name.size()) != 0)
        return false;
    const char* p = file + name.size() + 1;
    if (!digits(p, 8) || p[8] != '-' || !digits(p + 9, 6)) return false;
    const char* rest = p + 15;
    const char* end = file + length;
    if (end - rest < 4 || std::strcmp(end - 4, ".xml") != 0) return false;
    long sequence = 0;
    if (rest < end - 4) {
        size_t n = static_cast<size_t>(end - 4 - rest) - 1;
        if (*rest != '-' || n == 0 || n > 6 || !digits(rest + 1, n) || rest[1] == '0') return false;
        sequence = std::strtol(rest + 1, nullptr, 10);
    }
    out->stamp.assign(p, 15);
    out->sequence = sequence;
    out->file = file;
    return true;
}

void pruneArchives(const std::string& dir, const std::string& name, long keep) {
    const qarq::os::Calls& os = qarq::os::calls();
    DIR* d = os.opendir(dir.c_str());
    if (d == nullptr) {
        std::string note = "cannot list " + dir + " to delete old archives: " + std::strerror(errno);
        qarq::ras::detail::note("HeskOpenRetry", note.c_str());
        return;
    }
    std::vector<Archive> archives;
    while (struct dirent* entry = os.readdir(d)) {
        Archive archive;
        if (parseArchive(name, entry->d_name, &archive)) archives.push_back(std::move(archive));
    }
    os.closedir(d);
    if (archives.size() <= static_cast<size_t>(keep)) return;
    std::sort(archives.begin(), archives.end(), [](const Archive& a, const Archive& b) {
        return a.stamp != b.stamp ? a.stamp < b.stamp : a.sequence < b.sequence;
    });
    size_t surplus = archives.size() - static_cast<size_t>(keep);
    for (size_t i = 0; i < surplus; ++i) {
        std::string path = dir + "/" + archives[i].file;
        if (os.unlink(path.c_str()) != 0 && errno != ENOENT) {
            std::string note = "cannot delete old archive " + path + ": " + std::strerror(errno);
            qarq::ras::detail::note("HeskOpenRetry", note.c_str());
        }
    }
}

// Moves `current` to a new archive name. Returns 0 or an errno value.
int archive(const std::string& dir, const std::string& name, const std::string& current) {
    const qarq::os::Calls& os = qarq::os::calls();
    struct timespec now = {};
    if (os.clock_gettime(CLOCK_REALTIME, &now) != 0) return errno;
    struct tm local = {};
    time_t seconds = now.tv_sec;
    if (localtime_r(&seconds, &local) == nullptr) return EOVERFLOW;
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%04d%02d%02d-%02d%02d%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    std::string base = dir + "/" + name + "." + stamp;
    for (int n = 0; n < kMaxSameSecond; ++n) {
        std::string target = n == 0 ? base + ".xml" : base + "-" + std::to_string(n) + ".xml";
        if (os.renameNoReplace(current.c_str(), target.c_str()) == 0) return 0;
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

}  // namespace

extern "C" {

int HeskOpenRetry(const char* name, long limitBytes, FILE** file) {
    if (file == nullptr) return EINVAL;
    *file = nullptr;
    if (!validName(name)) return EINVAL;
    const qarq::os::Calls& os = qarq::os::calls();
    const char* bindir = os.getenv("BINDIR");
    if (bindir == nullptr || *bindir == '\0') return ENOENT;
    size_t bindirLength = strnlen(bindir, PATH_MAX);
    // Room for the archive name's stamp and sequence as well.
    if (bindirLength + 16 + std::strlen(name) + 32 >= PATH_MAX) return ENAMETOOLONG;
    std::string dir = std::string(bindir, bindirLength) + "/GRV/server/log";
    std::string current = dir + "/" + name + ".xml";

    struct stat st;
    if (os.stat(current.c_str(), &st) == 0) {
        if (!S_ISREG(st.st_mode)) return EISDIR;
        if (st.st_size > std::max(limitBytes, 0L)) {
            int rc = archive(dir, name, current);
            // Vanished meanwhile: someone else archived it; start afresh.
            if (rc != 0 && rc != ENOENT) return rc;
            pruneArchives(dir, name, archivesToKeep());
        }
    } else if (errno != ENOENT) {
        return errno;
    }
    errno = 0;
    FILE* opened = os.fopen(current.c_str(), "ae");
    if (opened == nullptr) return errno != 0 ? errno : EIO;
    *file = opened;
    return 0;
}

int HeskFileClose(FILE* file) {
    if (file == nullptr) return EBADF;
    errno = 0;
    if (qarq::os::calls().fclose(file) == 0) return 0;
    return errno != 0 ? errno : EIO;
}

}  // extern "C"
