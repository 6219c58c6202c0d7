// A failure that travels on the wire as a value: an error id and four texts.
//
// It is not thrown; a response or notification carries it as its exception
// object and owns it. The concrete class, with the peer's class name, lives
// in the program. clone() here copies the id and the four texts into a
// private class that keeps this object's wire class name; a subclass with
// fields of its own overrides clone() to copy them too.
// Threads: one owner at a time. Failures: stream faults pass through.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornCloneableObject.hpp"
#include "qarq/vorn/VornJavaString.hpp"

class QARQ_API VornObjectASerializableException : public VornCloneableObject {
public:
    VornObjectASerializableException(const VornObjectASerializableException& other);
    VornObjectASerializableException& operator=(const VornObjectASerializableException& other);
    ~VornObjectASerializableException() override;

    /// "VornObjectASerializableException".
    IString asString() const override;
    /// asString, "[base=", the VornCloneableObject text, ",excId='", the id,
    /// "',text1='", ... , "',text4='", text4, "]".
    IString asDebugInfo() const override;
    /// A heap copy with this object's id, texts and wire class name.
    VornCloneableObject* clone() const override;

    int getExcId() const { return excId; }
    VornJavaString getText1() const { return text1; }
    VornJavaString getText2() const { return text2; }
    VornJavaString getText3() const { return text3; }
    VornJavaString getText4() const { return text4; }
    void setText1(VornJavaString text) { text1 = text; }
    void setText2(VornJavaString text) { text2 = text; }
    void setText3(VornJavaString text) { text3 = text; }
    void setText4(VornJavaString text) { text4 = text; }

protected:
    VornObjectASerializableException(int excId, const VornJavaString& text1,
                                     const VornJavaString& text2, const VornJavaString& text3,
                                     const VornJavaString& text4);
    /// Body: int excId, then the four strings.
    void read(VornJavaRead& in) override;
    void write(VornJavaWrite& out) override;

    int excId;
    VornJavaString text1;
    VornJavaString text2;
    VornJavaString text3;
    VornJavaString text4;
};
