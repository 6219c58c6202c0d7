#include "StreamConverter.hpp"

#include <cstring>

#include "Cli.hpp"
#include "qarq/vorn/vornnls3.hpp"

namespace qarqtool {

namespace {

bool isUtf8(const VornNlsCodeSet* cs) {
    return cs->table == nullptr;
}

// The shift-in that a kind-4 target holds back between chunks.
const char kShiftIn = char(VORNNLS_SHIFT_IN);

}  // namespace

StreamConverter::StreamConverter(const VornNlsCodeSet* from, const VornNlsCodeSet* to, size_t chunk)
    : from_(from),
      to_(to),
      fromUtf8_(isUtf8(from)),
      toUtf8_(isUtf8(to)),
      toShifts_(!isUtf8(to) && to->kind == 4),
      chunk_(chunk < kMinChunk ? kMinChunk : (chunk > kMaxChunk ? kMaxChunk : chunk)) {
    for (Buffers& b : buffers_) {
        b.in.resize(chunk_ + kMaxCharacter + 1);
        // Three bytes of UTF-8 at most for one source byte; a kind-4 target
        // at most doubles UTF-8 (a shift-in before every single byte) and
        // closes with one shift-in.
        if (!fromUtf8_)
            b.mid.resize(3 * (chunk_ + kMaxCharacter) + 16);
        if (!toUtf8_)
            b.out.resize(2 * (fromUtf8_ ? chunk_ + kMaxCharacter : b.mid.size()) + 16);
    }
}

void StreamConverter::emit(const char* data, size_t length) {
    if (toShifts_) {
        if (heldShiftIn_) {
            heldShiftIn_ = false;
            if (length > 0 && data[0] == char(VORNNLS_SHIFT_OUT)) {
                ++data;
                --length;
            } else {
                batch_.push_back({&kShiftIn, 1});
            }
        }
        // A kind-4 target writes 0x0F only as a shift-in; hold the closing one.
        if (length > 0 && data[length - 1] == char(VORNNLS_SHIFT_IN)) {
            heldShiftIn_ = true;
            --length;
        }
    }
    if (length > 0)
        batch_.push_back({data, length});
}

void StreamConverter::convertChunk(Buffers& b, const unsigned char* source, size_t length) {
    const char* utf8 = reinterpret_cast<const char*>(source);
    size_t utf8Length = length;
    if (!fromUtf8_) {
        utf8Length =
            vornnls3_tis_to_utf8(from_, utf8, int(length), b.mid.data(), unsigned(b.mid.size()));
        utf8 = b.mid.data();
    }
    if (toUtf8_) {
        emit(utf8, utf8Length);
        return;
    }
    unsigned n =
        vornnls3_tis_from_utf8(to_, utf8, int(utf8Length), b.out.data(), unsigned(b.out.size()));
    emit(b.out.data(), n);
}

bool StreamConverter::run(FILE* in, const std::string& inName, FILE* out, std::string& error) {
    AsyncWriter writer(out);
    heldShiftIn_ = false;
    batch_.clear();
    int current = 0;
    size_t carry = 0;
    int shifted = 0;  // state of the engine at the first byte read
    for (;;) {
        Buffers& b = buffers_[current];
        unsigned char* data = b.in.data() + 1;
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
                writer.finish();
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
                b.in[0] = VORNNLS_SHIFT_OUT;
                convertChunk(b, b.in.data(), cut + 1);
            } else {
                convertChunk(b, data, cut);
            }
        }
        // The other set is free once the writer takes this chunk; the rest
        // of the window opens the next chunk there.
        const bool handedOver = writer.submit(batch_);
        carry = total - cut;
        current = 1 - current;
        std::memcpy(buffers_[current].in.data() + 1, data + cut, carry);
        if (!handedOver || atEnd)
            break;
    }
    if (heldShiftIn_)
        batch_.push_back({&kShiftIn, 1});
    const bool written = writer.submit(batch_) && writer.finish();
    if (!written) {
        error = "write: " + writer.error();
        return false;
    }
    return true;
}

}  // namespace qarqtool
