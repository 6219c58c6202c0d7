#include "qarq/base/ISimpleText.hpp"

#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "qarq/base/Os.hpp"

namespace {

// The code-set number a text takes when no name is given. The code-set map
// of the locale text classes will supply the process locale's number.
const int32_t kProcessCodeSet = 0;

void* copyOf(const void* text, std::size_t bytes) {
    void* copy = qarq::os::calls().malloc(bytes);
    if (copy != nullptr)
        std::memcpy(copy, text, bytes);
    return copy;
}

std::size_t narrowBytes(const char* text) { return std::strlen(text) + 1; }
std::size_t wideBytes(const wchar_t* text) { return (std::wcslen(text) + 1) * sizeof(wchar_t); }

}  // namespace

ISimpleText::ISimpleText() : ivForm(narrow), ivText(nullptr), ivCodeSet(-1) {}

ISimpleText::ISimpleText(const char* text, const char* codeSetName)
    : ivForm(narrow), ivText(nullptr), ivCodeSet(-1) {
    setText(text, codeSetName);
}

ISimpleText::ISimpleText(const wchar_t* text, const char* codeSetName)
    : ivForm(wide), ivText(nullptr), ivCodeSet(-1) {
    setText(text, codeSetName);
}

ISimpleText::ISimpleText(const ISimpleText& other)
    : ivForm(other.ivForm), ivText(nullptr), ivCodeSet(other.ivCodeSet) {
    if (other.ivText != nullptr)
        ivText = copyOf(other.ivText, ivForm == narrow
                                          ? narrowBytes(static_cast<const char*>(other.ivText))
                                          : wideBytes(static_cast<const wchar_t*>(other.ivText)));
}

ISimpleText& ISimpleText::operator=(const ISimpleText& other) {
    if (this != &other) {
        ISimpleText copy(other);
        release();
        ivForm = copy.ivForm;
        ivCodeSet = copy.ivCodeSet;
        ivText = copy.ivText;
        copy.ivText = nullptr;
    }
    return *this;
}

ISimpleText::~ISimpleText() { release(); }

void ISimpleText::release() {
    qarq::os::calls().free(ivText);
    ivText = nullptr;
}

ISimpleText& ISimpleText::setText(const char* text, const char* /*codeSetName*/) {
    release();
    ivForm = narrow;
    ivCodeSet = kProcessCodeSet;
    if (text != nullptr)
        ivText = copyOf(text, narrowBytes(text));
    return *this;
}

ISimpleText& ISimpleText::setText(const wchar_t* text, const char* /*codeSetName*/) {
    release();
    ivForm = wide;
    ivCodeSet = kProcessCodeSet;
    if (text != nullptr)
        ivText = copyOf(text, wideBytes(text));
    return *this;
}

ISimpleText& ISimpleText::append(const char* text) {
    if (text == nullptr)
        return *this;
    if (ivText == nullptr)
        return setText(text);
    if (ivForm == wide) {
        // Widening is lossless; narrowing the held text would not be.
        ISimpleText addition(text);
        const wchar_t* widened = addition.wideText();
        return widened != nullptr ? append(widened) : *this;
    }
    const char* held = static_cast<const char*>(ivText);
    std::size_t a = std::strlen(held);
    std::size_t b = std::strlen(text);
    auto* joined = static_cast<char*>(qarq::os::calls().malloc(a + b + 1));
    if (joined == nullptr)
        return *this;  // the addition is dropped; the held text stays
    std::memcpy(joined, held, a);
    std::memcpy(joined + a, text, b + 1);
    release();
    ivText = joined;
    return *this;
}

ISimpleText& ISimpleText::append(const wchar_t* text) {
    if (text == nullptr)
        return *this;
    if (ivText == nullptr)
        return setText(text);
    convertTo(wide);
    const wchar_t* held = static_cast<const wchar_t*>(ivText);
    std::size_t a = std::wcslen(held);
    std::size_t b = std::wcslen(text);
    auto* joined =
        static_cast<wchar_t*>(qarq::os::calls().malloc((a + b + 1) * sizeof(wchar_t)));
    if (joined == nullptr)
        return *this;
    std::wmemcpy(joined, held, a);
    std::wmemcpy(joined + a, text, b + 1);
    release();
    ivText = joined;
    return *this;
}

void ISimpleText::convertTo(int form) {
    if (ivForm == form || ivText == nullptr) {
        ivForm = ivText == nullptr ? form : ivForm;
        return;
    }
    // Only code set 0 has a conversion of its own here: bytes widen to units
    // and units narrow to their low byte. For any other code set the new
    // form is left as allocated (cleared), as the conversion does nothing.
    bool direct = ivCodeSet == 0;
    if (form == wide) {
        const auto* from = static_cast<const unsigned char*>(ivText);
        std::size_t n = std::strlen(static_cast<const char*>(ivText));
        auto* to = static_cast<wchar_t*>(qarq::os::calls().malloc((n + 1) * sizeof(wchar_t)));
        if (to == nullptr) {
            release();
        } else {
            for (std::size_t i = 0; i < n; ++i)
                to[i] = direct ? static_cast<wchar_t>(from[i]) : 0;
            to[n] = 0;
            release();
            ivText = to;
        }
    } else {
        const auto* from = static_cast<const wchar_t*>(ivText);
        std::size_t n = std::wcslen(from);
        auto* to = static_cast<char*>(qarq::os::calls().malloc(n + 1));
        if (to == nullptr) {
            release();
        } else {
            for (std::size_t i = 0; i < n; ++i) {
                auto unit = static_cast<uint32_t>(from[i]);
                to[i] = !direct ? '\0' : static_cast<char>(unit > 255 ? 0x1A : unit);
            }
            to[n] = '\0';
            release();
            ivText = to;
        }
    }
    ivForm = form;
}

const char* ISimpleText::text() {
    convertTo(narrow);
    return static_cast<const char*>(ivText);
}

const wchar_t* ISimpleText::wideText() {
    convertTo(wide);
    return static_cast<const wchar_t*>(ivText);
}

long ISimpleText::length() const {
    if (ivText == nullptr)
        return 0;
    if (ivForm == narrow)
        return static_cast<long>(std::strlen(static_cast<const char*>(ivText)));
    return static_cast<long>(std::wcslen(static_cast<const wchar_t*>(ivText)) * sizeof(wchar_t));
}

long ISimpleText::charCount() const {
    if (ivText == nullptr)
        return 0;
    if (ivForm == wide)
        return static_cast<long>(std::wcslen(static_cast<const wchar_t*>(ivText)));
    const char* p = static_cast<const char*>(ivText);
    long count = 0;
    std::mblen(nullptr, 0);
    while (*p != '\0') {
        int step = std::mblen(p, 5);
        if (step <= 0)
            return -1;
        p += step;
        ++count;
    }
    return count;
}
