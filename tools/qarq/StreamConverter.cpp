#include "StreamConverter.hpp"

#include <cstring>

#include "Cli.hpp"
#include "qarq/vorn/vornnls3.hpp"

namespace qarqtool {

namespace {

bool isUtf8(const VornNlsCodeSet* cs) {
    return cs->table == nullptr;
}

}  // namespace

StreamConverter::StreamConverter(const VornNlsCodeSet* from, const VornNlsCodeSet* to, size_t chunk)
    : from_(from),
      to_(to),
      fromUtf8_(isUtf8(from)),
      toUtf8_(isUtf8(to)),
      toShifts_(!isUtf8(to) && to->kind == 4),
      chunk_(chunk < kMinChunk ? kMinChunk : (chunk > kMaxChunk ? kMaxChunk : chunk)) {
    in_.resize(chunk_ + kMaxCharacter + 1);
    // Three bytes of UTF-8 at most for one source byte; a kind-4 target at
    // most doubles UTF-8 (a shift-in before every single byte) and closes
    // with one shift-in.
    if (!fromUtf8_)
        mid_.resize(3 * (chunk_ + kMaxCharacter) + 16);
    if (!toUtf8_)
        out_.resize(2 * (fromUtf8_ ? chunk_ + kMaxCharacter : mid_.size()) + 16);
}

bool StreamConverter::emit(const char* data, size_t length) {
    if (toShifts_) {
        if (heldShiftIn_) {
            heldShiftIn_ = false;
            if (length > 0 && data[0] == char(VORNNLS_SHIFT_OUT)) {
                ++data;
                --length;
            } else {
                const char shiftIn = char(VORNNLS_SHIFT_IN);
                if (std::fwrite(&shiftIn, 1, 1, sink_) != 1)
                    return false;
            }
        }
        // A kind-4 target writes 0x0F only as a shift-in; hold the closing one.
        if (length > 0 && data[length - 1] == char(VORNNLS_SHIFT_IN)) {
            heldShiftIn_ = true;
            --length;
        }
    }
    return length == 0 || std::fwrite(data, 1, length, sink_) == length;
}

void StreamConverter::convertChunk(const unsigned char* source, size_t length) {
    const char* utf8 = reinterpret_cast<const char*>(source);
    size_t utf8Length = length;
    if (!fromUtf8_) {
        utf8Length =
            vornnls3_tis_to_utf8(from_, utf8, int(length), mid_.data(), unsigned(mid_.size()));
        utf8 = mid_.data();
    }
    if (toUtf8_) {
        if (!emit(utf8, utf8Length))
            writeFailed_ = true;
        return;
    }
    unsigned n =
        vornnls3_tis_from_utf8(to_, utf8, int(utf8Length), out_.data(), unsigned(out_.size()));
    if (!emit(out_.data(), n))
        writeFailed_ = true;
}

bool StreamConverter::run(FILE* in, const std::string& inName, FILE* out, std::string& error) {
    sink_ = out;
    heldShiftIn_ = false;
    writeFailed_ = false;
    unsigned char* data = in_.data() + 1;
    size_t carry = 0;
    int shifted = 0;  // state of the engine at data[0]
    for (;;) {
        size_t total = carry;
        size_t limit = chunk_;
        bool atEnd = false;
        bool startShifted = shifted != 0;
        size_t cut = 0;
        for (;;) {
            while (total < limit) {
                size_t n = std::fread(data + total, 1, limit - total, in);
                if (n == 0)
                    break;
                total += n;
            }
            if (std::ferror(in)) {
                error = inName + ": " + lastError();
                return false;
            }
            atEnd = total < limit;
            int before = shifted;
            cut = atEnd ? total
                        : VornNlsBoundary(from_, reinterpret_cast<const char*>(data), total,
                                          &shifted);
            if (cut > 0 || atEnd)
                break;
            // A full chunk without one whole character: a table may define
            // characters longer than a small chunk. Widen the window once by
            // the longest character any table can define; should even that
            // hold none, the bytes go as they are, so the stream always moves.
            shifted = before;
            if (limit > chunk_) {
                cut = total;
                break;
            }
            limit = chunk_ + kMaxCharacter;
        }
        if (cut > 0) {
            if (startShifted) {
                in_[0] = VORNNLS_SHIFT_OUT;
                convertChunk(in_.data(), cut + 1);
            } else {
                convertChunk(data, cut);
            }
        }
        if (writeFailed_)
            break;
        carry = total - cut;
        std::memmove(data, data + cut, carry);
        if (atEnd)
            break;
    }
    if (!writeFailed_ && heldShiftIn_) {
        const char shiftIn = char(VORNNLS_SHIFT_IN);
        writeFailed_ = std::fwrite(&shiftIn, 1, 1, out) != 1;
    }
    if (writeFailed_) {
        error = "write: " + lastError();
        return false;
    }
    return true;
}

}  // namespace qarqtool
