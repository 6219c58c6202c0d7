#include "RecordWriter.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
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

// Plain pthread locks with static initialisers and no destructor: records are
// written (and flushed at detach) from code that runs after the library's
// static objects are gone.
pthread_rwlock_t gLogLock = PTHREAD_RWLOCK_INITIALIZER;  // write: open/close; read: write a line
enum LogState { kUnopened, kFile, kStderr };
LogState gLogState = kUnopened;
int gLogFd = -1;

// Opens the log if nobody has since the last reopen. Returns the note to write
// when the log had to fall back to stderr (once per fallback), else "".
std::string openLog() {
    pthread_rwlock_wrlock(&gLogLock);
    std::string fallback;
    if (gLogState == kUnopened) {
        const os::Calls& os = os::calls();
        std::string path;
        if (const char* file = os.getenv("QARZ_LOG_FILE"); file != nullptr && *file != '\0') {
            path.assign(file, strnlen(file, 4096));
        } else if (const char* bindir = os.getenv("BINDIR"); bindir != nullptr && *bindir != '\0') {
            path.assign(bindir, strnlen(bindir, 4096));
            path += "/GRV/server/log/qarzras.log";
        }
        gLogState = kStderr;
        if (!path.empty()) {
            int fd = os.open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
            if (fd >= 0) {
                gLogFd = fd;
                gLogState = kFile;
            } else {
                fallback = "cannot open log " + path.substr(0, 300) + " (" + std::strerror(errno) +
                           "); records go to standard error";
            }
        }
    }
    pthread_rwlock_unlock(&gLogLock);
    return fallback;
}

bool writeAll(int fd, const char* p, size_t left) {
    while (left > 0) {
        ssize_t n = os::calls().write(fd, p, left);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        p += n;
        left -= static_cast<size_t>(n);
    }
    return true;
}

// One write(2) per line on an O_APPEND descriptor: lines of concurrent threads
// and processes never interleave. A line the log file refuses (disk full, ...)
// still reaches standard error.
void writeLine(const std::string& line) {
    pthread_rwlock_rdlock(&gLogLock);
    bool written = false;
    if (gLogState == kFile) written = writeAll(gLogFd, line.data(), line.size());
    pthread_rwlock_unlock(&gLogLock);
    if (!written) writeAll(STDERR_FILENO, line.data(), line.size());
}

bool logOpened() {
    pthread_rwlock_rdlock(&gLogLock);
    bool opened = gLogState != kUnopened;
    pthread_rwlock_unlock(&gLogLock);
    return opened;
}

// ---- sinks -----------------------------------------------------------------

struct Sink {
    HeskSinkFn fn;
    void* context;
};
constexpr int kMaxSinks = 16;
// Read: sinks run; write: the table changes. Removing a sink thus waits for
// every running call of it to return.
pthread_rwlock_t gSinkLock = PTHREAD_RWLOCK_INITIALIZER;
Sink gSinks[kMaxSinks];
int gSinkCount = 0;
// A record written from inside a sink goes to the log only, so a sink that
// reports never recurses into itself.
thread_local bool tInSink = false;

void deliver(const HeskRecord& record) {
    if (tInSink) return;
    pthread_rwlock_rdlock(&gSinkLock);
    tInSink = true;
    for (int i = 0; i < gSinkCount; ++i) gSinks[i].fn(&record, gSinks[i].context);
    tInSink = false;
    pthread_rwlock_unlock(&gSinkLock);
}

// ---- rendering -------------------------------------------------------------

// Length of the well-formed UTF-8 sequence at p (at most n bytes available),
// 0 when the bytes there are not one: no overlong forms, no surrogates,
// nothing above U+10FFFF.
size_t utf8Sequence(const unsigned char* p, size_t n) {
    unsigned char c = p[0];
    size_t length;
    unsigned char low = 0x80, high = 0xbf;  // bounds of the second byte
    if (c >= 0xc2 && c <= 0xdf) {
        length = 2;
    } else if (c >= 0xe0 && c <= 0xef) {
        length = 3;
        if (c == 0xe0) low = 0xa0;
        if (c == 0xed) high = 0x9f;
    } else if (c >= 0xf0 && c <= 0xf4) {
        length = 4;
        if (c == 0xf0) low = 0x90;
        if (c == 0xf4) high = 0x8f;
    } else {
        return 0;
    }
    if (length > n || p[1] < low || p[1] > high) return 0;
    for (size_t k = 2; k < length; ++k)
        if ((p[k] & 0xc0) != 0x80) return 0;
    return length;
}

// Text is printable ASCII, tab, CR, LF and well-formed UTF-8.
bool isText(const unsigned char* p, size_t n) {
    for (size_t i = 0; i < n;) {
        unsigned char c = p[i];
        if ((c >= 0x20 && c < 0x7f) || c == '\t' || c == '\n' || c == '\r') {
            ++i;
            continue;
        }
        size_t length = utf8Sequence(p + i, n - i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

// Appends at most `n` bytes of `text` to a quoted field: quotes, backslashes
// and control bytes are escaped, and so is every byte that is not part of
// well-formed UTF-8, so the log stays valid UTF-8 whatever callers pass.
void appendText(std::string& out, const char* text, size_t n) {
    static const char kHex[] = "0123456789abcdef";
    const auto* p = reinterpret_cast<const unsigned char*>(text);
    for (size_t i = 0; i < n;) {
        unsigned char c = p[i];
        if (c == '"' || c == '\\') {
            out.push_back('\\');
            out.push_back(static_cast<char>(c));
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c >= 0x20 && c < 0x7f) {
            out.push_back(static_cast<char>(c));
        } else if (size_t length = c >= 0x80 ? utf8Sequence(p + i, n - i) : 0; length != 0) {
            out.append(text + i, length);
            i += length;
            continue;
        } else {
            out += "\\x";
            out.push_back(kHex[c >> 4]);
            out.push_back(kHex[c & 15]);
        }
        ++i;
    }
}

// A NUL-terminated field, cut at `limit` bytes (marked by "...").
void appendField(std::string& out, const char* text, size_t limit) {
    size_t n = strnlen(text, limit + 1);
    appendText(out, text, n > limit ? limit : n);
    if (n > limit) out += "...";
}

void appendPair(std::string& out, const HeskPair& pair) {
    if (pair.data == nullptr) {
        out += pair.length == 0 ? "\"\"" : "(null)";
        return;
    }
    uint32_t shown = pair.length < kMaxPairBytes ? pair.length : kMaxPairBytes;
    const auto* bytes = static_cast<const unsigned char*>(pair.data);
    // A cut must not split a character and turn text into hex.
    uint32_t textual = shown;
    if (shown < pair.length)
        while (textual > 0 && shown - textual < 3 && (bytes[textual] & 0xc0) == 0x80) --textual;
    if (isText(bytes, textual)) {
        out.push_back('"');
        appendText(out, reinterpret_cast<const char*>(bytes), textual);
        out.push_back('"');
        shown = textual;
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
    long millis = now.tv_nsec >= 0 && now.tv_nsec < 1000000000L ? now.tv_nsec / 1000000 : 0;
    char head[160];
    std::snprintf(head, sizeof head, "%04d-%02d-%02dT%02d:%02d:%02d.%03ldZ %ld %ld %s ",
                  tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min,
                  tm.tm_sec, millis, static_cast<long>(::getpid()),
                  static_cast<long>(::syscall(SYS_gettid)), kindName(r.kind));
    out += head;
    appendField(out, r.function, kMaxPairBytes);
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
        appendField(out, r.module, 64);
        for (int i = 0; i < r.insertCount && out.size() <= kMaxLine; ++i) {
            out += " i";
            out += std::to_string(i + 1);
            out += "=\"";
            appendField(out, r.inserts[i], kMaxPairBytes);
            out.push_back('"');
        }
    }
    for (int i = 0; i < r.pairCount && out.size() <= kMaxLine; ++i) {
        out += " p";
        out += std::to_string(i + 1);
        out.push_back('=');
        appendPair(out, r.pairs[i]);
    }
    if (*r.text != '\0' && out.size() <= kMaxLine) {
        out += " text=\"";
        appendField(out, r.text, kMaxLine);
        out.push_back('"');
    }
    if (out.size() > kMaxLine) {
        size_t cut = kMaxLine - 3;
        // Never end the line inside a character.
        while (cut > 0 && (static_cast<unsigned char>(out[cut]) & 0xc0) == 0x80) --cut;
        out.resize(cut);
        out += "...";
    }
    return out;
}

}  // namespace

void emit(HeskRecord& record) {
    if (record.function == nullptr) record.function = "";
    if (record.module == nullptr) record.module = "";
    if (record.text == nullptr) record.text = "";
    if (record.pairs == nullptr || record.pairCount < 0) record.pairCount = 0;
    if (record.inserts == nullptr || record.insertCount < 0) record.insertCount = 0;
    std::string fallback = logOpened() ? std::string() : openLog();
    if (!fallback.empty()) note("qarzras", fallback.c_str());
    std::string line = render(record);
    record.logLine = line.c_str();
    deliver(record);
    line.push_back('\n');
    writeLine(line);
}

void note(const char* function, const char* text) {
    HeskRecord record = {};
    record.kind = HESK_RECORD_NOTE;
    record.function = function;
    record.text = text;
    emit(record);
}

void flush() {
    // Lines are written straight to the descriptor, so nothing waits in a
    // buffer; flushing means making them durable.
    pthread_rwlock_rdlock(&gLogLock);
    if (gLogState == kFile) os::calls().fsync(gLogFd);
    pthread_rwlock_unlock(&gLogLock);
}

void reopen() {
    pthread_rwlock_wrlock(&gLogLock);
    if (gLogState == kFile) os::calls().close(gLogFd);
    gLogFd = -1;
    gLogState = kUnopened;
    pthread_rwlock_unlock(&gLogLock);
}

int addSink(HeskSinkFn fn, void* context) {
    if (fn == nullptr) return -1;
    pthread_rwlock_wrlock(&gSinkLock);
    int rc = -1;
    if (gSinkCount < kMaxSinks) {
        gSinks[gSinkCount++] = {fn, context};
        rc = 0;
    }
    pthread_rwlock_unlock(&gSinkLock);
    return rc;
}

int removeSink(HeskSinkFn fn, void* context) {
    pthread_rwlock_wrlock(&gSinkLock);
    int rc = -1;
    for (int i = 0; i < gSinkCount; ++i) {
        if (gSinks[i].fn == fn && gSinks[i].context == context) {
            for (int k = i + 1; k < gSinkCount; ++k) gSinks[k - 1] = gSinks[k];
            --gSinkCount;
            rc = 0;
            break;
        }
    }
    pthread_rwlock_unlock(&gSinkLock);
    return rc;
}

int takePairs(va_list args, int count, HeskPair* pairs) {
    if (count < 0) count = 0;
    if (count > kMaxPairs) count = kMaxPairs;
    for (int i = 0; i < count; ++i) {
        pairs[i].data = va_arg(args, const void*);
        pairs[i].length = va_arg(args, unsigned int);
    }
    return count;
}

}  // namespace qarq::ras::detail
