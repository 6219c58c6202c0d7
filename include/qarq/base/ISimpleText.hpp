// The narrow-or-wide text held by exceptions, locations and messages.
//
// It owns a NUL-terminated copy of its text, in one of two forms: bytes
// (narrow) or wchar_t units (wide). Asking for the other form converts the
// held text in place. With code set 0 a byte widens to one unit and a unit
// narrows to its low byte, or to 0x1A (SUB) above 255.
//
// Failures: nothing throws. When memory for the text can't be had, the text
// is null, so exceptions can be built even with the heap exhausted.
// Threads: one owner at a time.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

class QARQ_API ISimpleText {
public:
    enum Form { narrow = 0, wide = 1 };

    /// Null text, code set -1.
    ISimpleText();
    /// A copy of `text` (null gives null text). Without a code-set name the
    /// text takes the number of the process locale.
    explicit ISimpleText(const char* text, const char* codeSetName = nullptr);
    explicit ISimpleText(const wchar_t* text, const char* codeSetName = nullptr);
    ISimpleText(const ISimpleText& other);
    ISimpleText& operator=(const ISimpleText& other);
    ~ISimpleText();

    /// Releases the old text, then copies the new one.
    ISimpleText& setText(const char* text, const char* codeSetName = nullptr);
    ISimpleText& setText(const wchar_t* text, const char* codeSetName = nullptr);
    /// Adds `text` behind the held text, in the form of `text`.
    ISimpleText& append(const char* text);
    ISimpleText& append(const wchar_t* text);

    /// The text in narrow (wide) form, converting the held text if needed;
    /// null for null text.
    const char* text();
    const wchar_t* wideText();

    int form() const { return ivForm; }
    int32_t codeSet() const { return ivCodeSet; }
    bool isNull() const { return ivText == nullptr; }
    /// Byte length of the held form (strlen, or units times the unit size).
    long length() const;
    /// Characters of the held form; -1 for a bad multi-byte sequence.
    long charCount() const;

private:
    void release();
    void convertTo(int form);

    int32_t ivForm;
    void* ivText;
    int32_t ivCodeSet;
};
