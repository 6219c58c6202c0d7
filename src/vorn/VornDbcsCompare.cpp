#include "qarq/vorn/VornDbcsCompare.hpp"

#include <cstdint>

#include "vorn/VornTrace.hpp"

using qarq::vorn::traceControl;

namespace {

// How a run of rounds ends.
enum Outcome { kNoMatch = 0, kMatch = 1, kAtStar = 2 };

class Comparer {
  public:
    explicit Comparer(const unsigned char* ranges) : ranges_(ranges) {}

    bool lead(unsigned char byte) const {
        if (ranges_ == nullptr) {
            return false;
        }
        for (const unsigned char* r = ranges_; r[0] != 0 && r[1] != 0; r += 2) {
            if (byte >= r[0] && byte <= r[1]) {
                return true;
            }
        }
        return false;
    }

    // Bytes of the character at `t`: 2 for a lead byte with a byte behind it.
    // A lead byte right before the terminator counts as one byte, so that no
    // step ever goes past the terminator.
    size_t step(const unsigned char* t) const { return lead(t[0]) && t[1] != 0 ? 2 : 1; }

    // Runs the rounds of the comparison from (p, t) until they give a result
    // or the pattern stands on a `*`. Nothing in between branches: a `?` that
    // is not the last character hands on to the rest of the pattern, and a
    // literal either matches or ends the comparison. So where this stops is a
    // function of the start alone.
    Outcome run(const unsigned char*& p, const unsigned char*& t) const {
        for (;;) {
            const unsigned char pc = p[0];
            if (pc == 0 && t[0] == 0) {
                return kMatch;
            }
            if (pc == '*' && !lead(pc)) {
                return kAtStar;
            }
            if (pc == '?' && !lead(pc)) {
                if (p[1] == 0) {
                    return kMatch;  // however much text is left
                }
                if (t[0] != 0) {
                    t += step(t);
                }
                ++p;
                continue;
            }
            if (pc != t[0]) {
                return kNoMatch;
            }
            if (lead(pc) && p[1] != t[1]) {
                return kNoMatch;
            }
            const size_t s = step(t);
            if (p[s] != 0 && t[s] != 0) {
                p += s;
                t += s;
                continue;
            }
            if (p[s] != '*' && p[s] != '?') {
                return p[s] == 0 && t[s] == 0 ? kMatch : kNoMatch;
            }
            // The text ended with a wildcard next in the pattern: the wildcard
            // is tried against the text's last character again.
            p += s;
        }
    }

  private:
    const unsigned char* ranges_;
};

// A `*` at (p, t) matches when the rest of the pattern matches from any byte
// position k of the text at or behind t. Taken literally that is a recursion
// with one branch per star, exponential in the number of stars. But from each
// k the rounds run without branching until they end or reach the next star,
// at a text position m(k); and whether the star there succeeds can only get
// worse as m grows (it tries every position from m on). So it is enough to go
// on from the least m(k): one pass over k per star, no recursion, and time
// bounded by pattern length x text length.
int compare(const unsigned char* pattern, const unsigned char* text, const unsigned char* ranges) {
    const Comparer comparer(ranges);
    const unsigned char* p = pattern;
    const unsigned char* t = text;
    Outcome outcome = comparer.run(p, t);
    while (outcome == kAtStar) {
        if (p[1] == 0) {
            return 1;
        }
        const unsigned char* rest = p + 1;
        const unsigned char* bestText = nullptr;
        const unsigned char* bestPattern = nullptr;
        for (const unsigned char* k = t;; ++k) {
            // The rounds never move the text backwards: a start behind the
            // least stop so far cannot stop before it.
            if (bestText != nullptr && k > bestText) {
                break;
            }
            const unsigned char* pp = rest;
            const unsigned char* tt = k;
            const Outcome tried = comparer.run(pp, tt);
            if (tried == kMatch) {
                return 1;
            }
            if (tried == kAtStar && (bestText == nullptr || tt < bestText)) {
                bestText = tt;
                bestPattern = pp;
            }
            if (*k == 0) {
                break;
            }
        }
        if (bestText == nullptr) {
            return 0;
        }
        p = bestPattern;
        t = bestText;
    }
    return outcome == kMatch ? 1 : 0;
}

}  // namespace

extern "C" int VornStringCompare(const char* pattern, const char* text,
                                 const unsigned char* leadRanges) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornStringCompare",
                     qarq::ras::pair(pattern), qarq::ras::pair(text));
    int result = 0;
    if (pattern != nullptr && text != nullptr) {
        result = compare(reinterpret_cast<const unsigned char*>(pattern),
                         reinterpret_cast<const unsigned char*>(text), leadRanges);
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornStringCompare", qarq::ras::pair(result));
    return result;
}
