#include "vorn/VornDbcsDice.hpp"

#include <cstring>

#include "vorn/VornDbcsInternal.hpp"
#include "vorn/VornTrace.hpp"

using qarq::vorn::traceControl;

namespace {

constexpr char kCarriageReturn = 13;

}  // namespace

extern "C" {

unsigned VornDbcs_chop_word(char* text, unsigned lineStart, unsigned position, unsigned* length,
                            const char* delimiters) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_chop_word", qarq::ras::pair(text),
                     qarq::ras::pair(lineStart), qarq::ras::pair(position),
                     qarq::ras::pair(delimiters));
    const char saved = text[position];
    text[position] = '\0';
    unsigned offset = static_cast<unsigned>(VornDbcs_strlastchr(text + lineStart, delimiters));
    text[position] = saved;
    if (offset == 0) {
        // A delimiter at the very head of the line is the one the previous
        // break left there: breaking in front of it again would make an empty
        // line and start the same line over, until the buffer is full.
        offset = position - lineStart;
    }
    const unsigned at = lineStart + offset;
    std::memmove(text + at + 1, text + at, std::strlen(text + at) + 1);
    text[at] = kCarriageReturn;
    if (length != nullptr) {
        ++*length;
    }
    const unsigned next = at + 1;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_chop_word", qarq::ras::pair(next));
    return next;
}

int VornDbcs_dice_msg_text(char* text, int width, unsigned capacity, const char* delimiters,
                           const char* newlines) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_dice_msg_text",
                     qarq::ras::pair(text), qarq::ras::pair(width), qarq::ras::pair(capacity),
                     qarq::ras::pair(delimiters), qarq::ras::pair(newlines));
    int result = 1;
    unsigned length = static_cast<unsigned>(std::strlen(text));
    unsigned i = 0;
    unsigned lineStart = 0;
    int column = 0;
    if (width < 1) {
        result = 0;  // no line holds a character: every break would be empty
        i = length;
    }
    while (i < length) {
        if (length + 1 >= capacity) {
            break;
        }
        ++column;
        const int type = VornDbcsByteType(text + i, 0);
        if (type != VORN_DBCS_SINGLE && type != VORN_DBCS_LEAD) {
            result = 0;
            break;
        }
        if (VornDbcsCharVal(text + i, 0, newlines) != 0) {
            column = 0;
            i += static_cast<unsigned>(type);
            lineStart = i;
        } else if (column > width) {
            // The loop's own test above leaves room for the one byte.
            i = VornDbcs_chop_word(text, lineStart, i, &length, delimiters);
            column = 0;
            lineStart = i;
        } else {
            i += static_cast<unsigned>(type);
        }
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_dice_msg_text",
                     qarq::ras::pair(result), qarq::ras::pair(text));
    return result;
}

int VornDbcs_dice_str_text(char* text, unsigned short width, unsigned short capacity,
                           const char* delimiters, unsigned short* count) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornDbcs_dice_str_text",
                     qarq::ras::pair(text), qarq::ras::pair(static_cast<uint32_t>(width)),
                     qarq::ras::pair(static_cast<uint32_t>(capacity)), qarq::ras::pair(delimiters));
    int result = 1;
    unsigned short ignored = 0;
    if (count == nullptr) {
        count = &ignored;
    }
    *count = 0;
    unsigned length = static_cast<unsigned>(std::strlen(text));
    unsigned i = 0;
    unsigned lineStart = 0;
    while (i < length && length - i > width) {
        // i is on a character start, so typing from there is the same as
        // typing from the text's start, at a cost of `width` bytes.
        const int type = VornDbcsByteType(text + i, width);
        unsigned step = width;
        if (type == VORN_DBCS_TRAIL) {
            step = width - 1u;  // break in front of the lead byte
        } else if (type != VORN_DBCS_SINGLE && type != VORN_DBCS_LEAD) {
            result = 0;
            break;
        }
        if (step == 0) {
            result = 0;  // the width cannot hold this character
            break;
        }
        i += step;
        if (length + 1 >= capacity) {
            result = 0;
            break;
        }
        i = static_cast<unsigned short>(
            VornDbcs_chop_word(text, lineStart, i, &length, delimiters));
        lineStart = i;
        ++*count;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornDbcs_dice_str_text",
                     qarq::ras::pair(result), qarq::ras::pair(text));
    return result;
}

}  // extern "C"
