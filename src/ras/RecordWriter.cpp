#include "RecordWriter.hpp"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <shared_mutex>
#include <string>

#include "qarq/base/Os.hpp"
#include "qarq/ras/MessageCatalogue.hpp"

namespace qarq::ras::detail {
namespace {

// One record is one write of at most PIPE_BUF bytes, so it stays whole even
// when the log is a pipe (stderr under a supervisor); longer lines are cut.
constexpr size_t kMaxLine = 4096 - 1;
// What one pair or insert may contribute to a line.
constexpr uint32_t kMaxPairBytes = 256;

const char* kindName(int kind) {
    switch (kind) {
        case HESK_RECORD_TRACE: return "TRACE";
        case HESK_RECORD_ERROR: return "ERROR";
        case HESK_RECORD_ISSUE: return "ISSUE";
        case HESK_RECORD_MSGLOG: return "MSG";
        case HESK_RECORD_NOTE: return "NOTE";
        default: return "?";
    }
}

// ---- the log target --------------------------------------------------------

std::mutex gLogMutex;  // guards opening and closing, not writing
int gLogFd = -1;       // -1: not opened yet
bool gLogIsStderr = false;

int logFd() {
    std::lock_guard<std::mutex> lock(gLogMutex);
    if (gLogFd >= 0 || gLogIsStderr) return gLogIsStderr ? STDERR_FILENO : gLogFd;
    const os::Calls& os = os::calls();
    std::string path;
    if (const char* file = os.getenv("QARZ_LOG_FILE"); file != nullptr && *file != '\0') {
        path = file;
    } else if (const char* bindir = os.getenv("BINDIR"); bindir != nullptr && *bindir != '\0') {
        path = std::string(bindir) + "/GRV/server/log/qarzras.log";
    }
    if (!path.empty()) {
        int fd = os.open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
        if (fd >= 0) {
            gLogFd = fd;
            return fd;
        }
        int err = errno;
        char msg[512];
        int n = std::snprintf(msg, sizeof msg,
                              "qarzras: cannot open log %.300s (%s); records go to standard "
                              "error\n",
                              path.c_str(), std::strerror(err));
        if (n > 0) (void)!::write(STDERR_FILENO, msg, std::min<size_t>(n, sizeof msg - 1));
    }
    gLogIsStderr = true;
    return STDERR_FILENO;
}

// ---- sinks -----------------------------------------------------------------

struct Sink {
    HeskSinkFn fn;
    void* context;
};
constexpr int kMaxSinks = 16;
std::shared_mutex gSinkMutex;
Sink gSinks[kMaxSinks];
int gSinkCount = 0;
// A record written from inside a sink goes to the log only, so a sink that
// reports never recurses into itself.
thread_local bool tInSink = false;

void deliver(const HeskRecord& record) {
    if (tInSink) return;
    std::shared_lock<std::shared_mutex> lock(gSinkMutex);
    tInSink = true;
    for (int i = 0; i < gSinkCount; ++i) gSinks[i].fn(&record, gSinks[i].context);
    tInSink = false;
}

// ---- rendering -------------------------------------------------------------

bool isText(const unsigned char* p, uint32_t n) {
    for (uint32_t i = 0; i < n;) {
        unsigned char c = p[i];
        if (c >= 0x20 && c < 0x7f) {
            ++i;
            continue;
        }
        int len = (c >= 0xc2 && c <= 0xdf) ? 2 : (c >= 0xe0 && c <= 0xef) ? 3
                  : (c >= 0xf0 && c <= 0xf4) ? 4 : 0;
        if (len == 0 || i + len > n) return false;
        for (int k = 1; k < len; ++k)
            if ((p[i + k] & 0xc0) != 0x80) return false;
        i += len;
    }
    return true;
}

void appendText(std::string& out, const char* text) {
    for (const char* p = text; *p != '\0'; ++p) {
        unsigned char c = static_cast<unsigned char>(*p);
        if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(*p);
        } else if (c == '\n') {
            out += "\\n";
        } else if (c < 0x20 || c == 0x7f) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else {
            out.push_back(*p);
        }
    }
}

void appendPair(std::string& out, const HeskPair& pair) {
    if (pair.data == nullptr) {
        out += pair.length == 0 ? "\"\"" : "(null)";
        return;
    }
    uint32_t shown = pair.length < kMaxPairBytes ? pair.length : kMaxPairBytes;
    const auto* bytes = static_cast<const unsigned char*>(pair.data);
    if (isText(bytes, shown)) {
        out.push_back('"');
        std::string text(reinterpret_cast<const char*>(bytes), shown);
        appendText(out, text.c_str());
        out.push_back('"');
    } else {
        out += "0x";
        static const char kHex[] = "0123456789abcdef";
        for (uint32_t i = 0; i < shown; ++i) {
            out.push_back(kHex[bytes[i] >> 4]);
            out.push_back(kHex[bytes[i] & 15]);
        }
    }
    if (shown < pair.length) {
        char more[48];
        std::snprintf(more, sizeof more, "...(%u bytes)", pair.length);
        out += more;
    }
}

std::string render(const HeskRecord& r) {
    std::string out;
    out.reserve(256);
    struct timespec now = {};
    os::calls().clock_gettime(CLOCK_REALTIME, &now);
    struct tm tm = {};
    time_t secs = now.tv_sec;
    gmtime_r(&secs, &tm);
    char head[160];
    std::snprintf(head, sizeof head, "%04d-%02d-%02dT%02d:%02d:%02d.%03ldZ %ld %ld %s ",
                  tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                  tm.tm_sec, static_cast<long>(now.tv_nsec / 1000000),
                  static_cast<long>(::getpid()), static_cast<long>(::syscall(SYS_gettid)),
                  kindName(r.kind));
    out += head;
    appendText(out, r.function);
    char tail[96];
    switch (r.kind) {
        case HESK_RECORD_TRACE:
            std::snprintf(tail, sizeof tail, ":%d kind=%d level=%d", r.line, r.traceKind,
                          r.level);
            break;
        case HESK_RECORD_ERROR:
            std::snprintf(tail, sizeof tail, ":%d codes=%d,%d level=%d", r.line, r.code1,
                          r.code2, r.level);
            break;
        case HESK_RECORD_ISSUE:
        case HESK_RECORD_MSGLOG:
            std::snprintf(tail, sizeof tail, ":%d msg=%d sev=%d module=", r.line,
                          r.messageNumber, r.level);
            break;
        default:
            std::snprintf(tail, sizeof tail, ":%d", r.line);
            break;
    }
    out += tail;
    if (r.kind == HESK_RECORD_ISSUE || r.kind == HESK_RECORD_MSGLOG) {
        appendText(out, r.module);
        for (int i = 0; i < r.insertCount; ++i) {
            out += " i";
            out += std::to_string(i + 1);
            out += "=\"";
            std::string ins(r.inserts[i], strnlen(r.inserts[i], kMaxPairBytes));
            appendText(out, ins.c_str());
            out.push_back('"');
        }
    }
    for (int i = 0; i < r.pairCount; ++i) {
        out += " p";
        out += std::to_string(i + 1);
        out.push_back('=');
        appendPair(out, r.pairs[i]);
        if (out.size() > kMaxLine) break;
    }
    if (*r.text != '\0') {
        out += " text=\"";
        appendText(out, r.text);
        out.push_back('"');
    }
    if (out.size() > kMaxLine) {
        out.resize(kMaxLine - 4);
        out += "...";
    }
    return out;
}

}  // namespace

void emit(HeskRecord& record) {
    if (record.function == nullptr) record.function = "";
    if (record.module == nullptr) record.module = "";
    if (record.text == nullptr) record.text = "";
    if (record.pairs == nullptr) record.pairCount = 0;
    if (record.inserts == nullptr) record.insertCount = 0;
    if (record.pairCount < 0) record.pairCount = 0;
    if (record.insertCount < 0) record.insertCount = 0;
    std::string line = render(record);
    record.logLine = line.c_str();
    deliver(record);
    line.push_back('\n');
    int fd = logFd();
    const char* p = line.data();
    size_t left = line.size();
    while (left > 0) {
        ssize_t n = os::calls().write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        p += n;
        left -= static_cast<size_t>(n);
    }
}

void note(const char* function, const char* text) {
    HeskRecord record = {};
    record.kind = HESK_RECORD_NOTE;
    record.function = function;
    record.text = text;
    emit(record);
}

void flush() {
    std::lock_guard<std::mutex> lock(gLogMutex);
    if (gLogFd >= 0) os::calls().fsync(gLogFd);
}

void reopen() {
    std::lock_guard<std::mutex> lock(gLogMutex);
    if (gLogFd >= 0) os::calls().close(gLogFd);
    gLogFd = -1;
    gLogIsStderr = false;
}

int addSink(HeskSinkFn fn, void* context) {
    std::unique_lock<std::shared_mutex> lock(gSinkMutex);
    if (fn == nullptr || gSinkCount == kMaxSinks) return -1;
    gSinks[gSinkCount++] = {fn, context};
    return 0;
}

int removeSink(HeskSinkFn fn, void* context) {
    std::unique_lock<std::shared_mutex> lock(gSinkMutex);
    for (int i = 0; i < gSinkCount; ++i) {
        if (gSinks[i].fn == fn && gSinks[i].context == context) {
            for (int k = i + 1; k < gSinkCount; ++k) gSinks[k - 1] = gSinks[k];
            --gSinkCount;
            return 0;
        }
    }
    return -1;
}

}  // namespace qarq::ras::detail
