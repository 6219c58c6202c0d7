// The fields every message carries: source host, target host, kind
// (1 request, 2 response, 3 notification) and client id.
//
// Body on the wire: string sHost, string tHost, int type, int client. A
// subclass's body follows, its own read and write calling this class's first.
// The kind is read from the stream like any other field and not checked.
// Threads: one owner at a time. Failures: stream faults pass through, with the
// fields read before the fault already stored.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornJavaString.hpp"
#include "qarq/vorn/VornObject.hpp"

class QARQ_API VornObjectAMessage : public VornObject {
public:
    VornObjectAMessage(const VornObjectAMessage& other);
    VornObjectAMessage& operator=(const VornObjectAMessage& other);
    ~VornObjectAMessage() override;

    /// "VornObjectAMessage".
    IString asString() const override;
    /// asString, "[base=", the VornObject text, ",sHost=", ..., ",client=", client, "]".
    IString asDebugInfo() const override;

    VornJavaString getSHost() const { return sHost; }
    VornJavaString getTHost() const { return tHost; }

protected:
    explicit VornObjectAMessage(int type);
    void read(VornJavaRead& in) override;
    void write(VornJavaWrite& out) override;

    VornJavaString sHost;
    VornJavaString tHost;
    int type;
    int client;
};
