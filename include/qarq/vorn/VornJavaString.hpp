// The text of the wire model: an IString and nothing more.
//
// Inside the library the text is in the default code set; the stream classes
// convert it to and from UTF-8 at the border. Copying shares the text as
// IString copies do. asString gives the class name, never the text.
// Threads: as IString.
#pragma once

#include "qarq/base/IString.hpp"
#include "qarq/export.hpp"

class QARQ_API VornJavaString : public IString {
public:
    VornJavaString();
    VornJavaString(const IString& text);  // NOLINT: implicit on purpose
    /// A null pointer gives the empty text.
    VornJavaString(const char* text);  // NOLINT: implicit on purpose
    VornJavaString(const VornJavaString& other);
    VornJavaString& operator=(const VornJavaString& other);
    ~VornJavaString();

    /// "VornJavaString".
    IString asString() const;
    /// "VornJavaString[this=0x<address>, length=<n>]".
    IString asDebugInfo() const;
};
