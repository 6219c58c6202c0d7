#include "qarq/ras/MessageCatalogue.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "qarq/base/Os.hpp"

namespace qarq::ras {
namespace {

// Catalogue lines are short; a line longer than this is hostile or broken.
constexpr size_t kMaxLine = 64 * 1024;
// A catalogue file larger than this is refused rather than read into memory.
constexpr off_t kMaxFile = 16 * 1024 * 1024;

std::string unescape(const char* begin, const char* end) {
    std::string out;
    out.reserve(static_cast<size_t>(end - begin));
    for (const char* p = begin; p < end; ++p) {
        if (*p == '\\' && p + 1 < end && (p[1] == 'n' || p[1] == 't' || p[1] == '\\')) {
            ++p;
            out.push_back(*p == 'n' ? '\n' : *p == 't' ? '\t' : '\\');
        } else {
            out.push_back(*p);
        }
    }
    return out;
}

}  // namespace

size_t MessageCatalogue::loadText(const char* text, size_t length) {
    if (text == nullptr) return 0;
    size_t added = 0;
    const char* end = text + length;
    for (const char* line = text; line < end;) {
        const char* eol = static_cast<const char*>(std::memchr(line, '\n', end - line));
        if (eol == nullptr) eol = end;
        const char* stop = (eol > line && eol[-1] == '\r') ? eol - 1 : eol;
        if (static_cast<size_t>(stop - line) <= kMaxLine && stop > line && *line != '#') {
            long number = 0;
            const char* p = line;
            while (p < stop && *p >= '0' && *p <= '9' && number <= INT_MAX / 10) {
                number = number * 10 + (*p - '0');
                ++p;
            }
            if (p > line && p < stop && *p == '\t' && number <= INT_MAX) {
                texts_[static_cast<int>(number)] = unescape(p + 1, stop);
                ++added;
            }
        }
        line = eol + 1;
    }
    return added;
}

bool MessageCatalogue::loadFile(const char* path) {
    if (path == nullptr) return false;
    const os::Calls& os = os::calls();
    int fd = os.open(path, O_RDONLY | O_CLOEXEC, 0);
    if (fd < 0) return false;
    struct stat st;
    if (os.fstat(fd, &st) != 0 || st.st_size > kMaxFile) {
        os.close(fd);
        return false;
    }
    std::string content;
    char chunk[8192];
    for (;;) {
        ssize_t n = os.read(fd, chunk, sizeof chunk);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) {
            os.close(fd);
            return false;
        }
        if (n == 0) break;
        if (content.size() + static_cast<size_t>(n) > static_cast<size_t>(kMaxFile)) {
            os.close(fd);
            return false;
        }
        content.append(chunk, static_cast<size_t>(n));
    }
    os.close(fd);
    loadText(content.data(), content.size());
    return true;
}

const char* MessageCatalogue::text(int number) const {
    auto it = texts_.find(number);
    return it == texts_.end() ? nullptr : it->second.c_str();
}

std::string MessageCatalogue::format(const char* text, const char* const* inserts,
                                     int insertCount) {
    std::string out;
    if (text == nullptr) return out;
    for (const char* p = text; *p != '\0'; ++p) {
        if (p[0] == '%' && p[1] == '%') {
            out.push_back('%');
            ++p;
        } else if (p[0] == '%' && p[1] >= '1' && p[1] <= '9') {
            int index = p[1] - '1';
            if (inserts != nullptr && index < insertCount && inserts[index] != nullptr)
                out.append(inserts[index]);
            ++p;
        } else {
            out.push_back(*p);
        }
    }
    return out;
}

}  // namespace qarq::ras
