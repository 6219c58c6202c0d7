// Numbered message texts.
//
// A catalogue is plain UTF-8 text, one message a line: NUMBER<TAB>TEXT, with
// %1..%9 for inserts, "\n" and "\t" for a line end and a tab, "%%" for a
// percent sign; '#' lines and blank lines are comments. The diagnostics
// library carries its own catalogue ("qarz.dll") built in; other catalogues
// are files, named by their path.
//
// Threads: a catalogue is filled once and then only read; reads from many
// threads need no lock. Failures: a malformed line is skipped, never fatal.
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "qarq/export.hpp"

namespace qarq::ras {

class QARQ_API MessageCatalogue {
public:
    /// Adds the messages of `text` (the file format above). A number given
    /// twice keeps its last text. Returns the number of messages read.
    size_t loadText(const char* text, size_t length);

    /// Reads a catalogue file. Returns false, adding nothing, when it cannot
    /// be read.
    bool loadFile(const char* path);

    /// The text of `number` with inserts unfilled, or nullptr. The pointer
    /// stays valid while the catalogue is neither changed nor destroyed.
    const char* text(int number) const;

    size_t size() const { return texts_.size(); }

    /// Fills %1..%9 of `text` from `inserts` (a missing or null insert reads as
    /// empty) and turns %% into %. Any other % stays as it is.
    static std::string format(const char* text, const char* const* inserts, int insertCount);

private:
    std::map<int, std::string> texts_;
};

}  // namespace qarq::ras
