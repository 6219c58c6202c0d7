#include "CodesetDir.hpp"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace qarqtool {

namespace {

bool isDirectory(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string withSlash(std::string path) {
    if (path.empty() || path.back() != '/')
        path += '/';
    return path;
}

}  // namespace

CodesetDir::~CodesetDir() {
    dropView();
}

void CodesetDir::dropView() {
    if (view_.empty())
        return;
    ::unlink((view_ + "/GRV/server/codeset").c_str());
    ::rmdir((view_ + "/GRV/server").c_str());
    ::rmdir((view_ + "/GRV").c_str());
    ::rmdir(view_.c_str());
    view_.clear();
}

std::string CodesetDir::besideExecutable() {
    char exe[PATH_MAX];
    ssize_t n = ::readlink("/proc/self/exe", exe, sizeof exe - 1);
    if (n <= 0)
        return "";
    std::string path(exe, size_t(n));
    size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return "";
    return path.substr(0, slash) + "/../share/qarq/codeset/";
}

bool CodesetDir::open(const std::string& option, std::string& error) {
    const char* bindir = std::getenv("BINDIR");
    bool haveBindir = bindir != nullptr && *bindir != '\0';
    if (!option.empty()) {
        if (!isDirectory(option)) {
            error = "--codeset-dir " + option + ": not a directory";
            return false;
        }
        path_ = withSlash(option);
    } else if (haveBindir && isDirectory(std::string(bindir) + "/GRV/server/codeset")) {
        path_ = std::string(bindir) + "/GRV/server/codeset/";
        viaBindir_ = true;  // the library looks there by itself
    } else {
        path_ = besideExecutable();
        if (path_.empty() || !isDirectory(path_)) {
            error =
                "no code-set tables: give --codeset-dir, set BINDIR, or install the tables"
                " in " +
                (path_.empty() ? std::string("share/qarq/codeset") : path_);
            return false;
        }
    }
    return true;
}

bool CodesetDir::pointLibrary(std::string& error) {
    if (viaBindir_ || !view_.empty())
        return true;
    // The link needs an absolute target, else it would resolve inside the view.
    char real[PATH_MAX];
    if (::realpath(path_.c_str(), real) == nullptr) {
        error = path_ + ": " + std::strerror(errno);
        return false;
    }
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern =
        std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/qarq-bindir-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data()) == nullptr) {
        error = "cannot make a private BINDIR in " + pattern + ": " + std::strerror(errno);
        return false;
    }
    view_ = name.data();
    if (::mkdir((view_ + "/GRV").c_str(), 0700) != 0 ||
        ::mkdir((view_ + "/GRV/server").c_str(), 0700) != 0 ||
        ::symlink(real, (view_ + "/GRV/server/codeset").c_str()) != 0) {
        error = "cannot make a private BINDIR in " + view_ + ": " + std::strerror(errno);
        return false;
    }
    // The library's log goes under BINDIR when QARZ_LOG_FILE is unset; keep it
    // where the caller's environment puts it, not in the private view.
    const char* bindir = std::getenv("BINDIR");
    const char* logFile = std::getenv("QARZ_LOG_FILE");
    if (logFile == nullptr || *logFile == '\0') {
        std::string log = bindir != nullptr && *bindir != '\0'
                              ? std::string(bindir) + "/GRV/server/log/qarzras.log"
                              : std::string("/dev/stderr");
        ::setenv("QARZ_LOG_FILE", log.c_str(), 1);
    }
    ::setenv("BINDIR", view_.c_str(), 1);
    path_ = withSlash(real);
    return true;
}

std::string CodesetDir::fileOf(const std::string& name) const {
    if (name.empty() || name.find('/') != std::string::npos)
        return "";
    std::string file = path_ + name;
    struct stat st;
    if (::stat(file.c_str(), &st) != 0 || !S_ISREG(st.st_mode))
        return "";
    return file;
}

std::vector<std::string> CodesetDir::entries() const {
    std::vector<std::string> names;
    DIR* dir = ::opendir(path_.c_str());
    if (dir == nullptr)
        return names;
    while (struct dirent* e = ::readdir(dir)) {
        std::string name = e->d_name;
        if (name[0] != '.' && !fileOf(name).empty())
            names.push_back(name);
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace qarqtool
