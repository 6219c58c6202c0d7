// Helpers of the code-set tests: a temporary BINDIR tree, a scoped working
// directory, records loaded from UcvImage, and conversions into strings. Environment variables,
// temporary directories, files and logged records come from the shared test
// support.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "TableWriter.hpp"
#include "qarq/vorn/vornnls2.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "support/CodesetTree.hpp"
#include "support/TestSupport.hpp"

namespace qarq::test {

/// Table images are byte vectors; the shared helper writes strings.
inline void writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    support::writeFile(path, std::string(bytes.begin(), bytes.end()));
}

/// An empty $BINDIR/GRV/server/codeset tree, with BINDIR set.
class BindirTree : public CodesetTree {
public:
    BindirTree() : CodesetTree(Empty{}) {}
    std::string codeset() const { return codesetDir() + "/"; }
    void put(const std::string& name, const std::vector<uint8_t>& bytes) const {
        write(name, std::string(bytes.begin(), bytes.end()));
    }
    void put(const std::string& name, const std::string& bytes) const { write(name, bytes); }
};

/// Runs in another working directory for the life of the object.
class ScopedCwd {
public:
    explicit ScopedCwd(const std::string& dir) {
        char buffer[4096];
        old_ = getcwd(buffer, sizeof buffer) ? buffer : "/";
        EXPECT_EQ(chdir(dir.c_str()), 0);
    }
    ~ScopedCwd() { (void)!chdir(old_.c_str()); }

private:
    std::string old_;
};

struct RecordFree {
    void operator()(VornNlsCodeSet* cs) const { vornnls6_tis_cs_free(cs, 0); }
};
using Record = std::unique_ptr<VornNlsCodeSet, RecordFree>;

/// A record loaded through the library's loader from `image`.
inline Record load(const UcvImage& image, const char* name = "T") {
    BindirTree tree;
    tree.put(name, image.bytes());
    return Record(vornnls2_cs_new(name));
}

/// What `cs` makes of `in` in a target of `room` bytes (by default enough
/// for any result).
inline std::string convert(const VornNlsCodeSet* cs, const std::string& in, bool toUtf8,
                           unsigned room = ~0u) {
    std::string out(room == ~0u ? 3 * in.size() + 16 : room, '\xAA');
    out.resize(toUtf8 ? vornnls3_tis_to_utf8(cs, in.data(), int(in.size()), out.data(),
                                             unsigned(out.size()))
                      : vornnls3_tis_from_utf8(cs, in.data(), int(in.size()), out.data(),
                                               unsigned(out.size())));
    return out;
}
inline std::string toUtf8(const VornNlsCodeSet* cs, const std::string& in, unsigned room = ~0u) {
    return convert(cs, in, true, room);
}
inline std::string fromUtf8(const VornNlsCodeSet* cs, const std::string& in, unsigned room = ~0u) {
    return convert(cs, in, false, room);
}

/// Collects the records logged while it lives.
using ErrorLog = support::Records;

}  // namespace qarq::test
