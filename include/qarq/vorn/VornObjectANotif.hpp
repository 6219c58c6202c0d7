// A notification: the message fields, a reason code and the exception object
// that reports a failure; nobody asked for it, so it has no correlator.
//
// Body: the message body, int posExtReasonCode, then the exception as an
// object (the empty class name when there is none).
// Ownership: as VornObjectAResponse: the notification owns its exception, a
// copy owns a copy, assignment deletes the target's. A stream that brings an
// exception with none set raises VornJavaExcNullObject.
// Threads and failures: as VornObjectAMessage.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornObjectAMessage.hpp"
#include "qarq/vorn/VornObjectASerializableException.hpp"

class QARQ_API VornObjectANotif : public VornObjectAMessage {
public:
    VornObjectANotif(const VornObjectANotif& other);
    VornObjectANotif& operator=(const VornObjectANotif& other);

    /// "VornObjectANotif".
    IString asString() const override;
    /// asString, "[base=", the VornObjectAMessage text, ",exc=", the
    /// exception's address in hex, "]".
    IString asDebugInfo() const override;

    int getPosReasonCode() const { return posExtReasonCode; }
    VornObjectANotif& setPosExtReasonCode(int value);
    /// Still owned by the notification; null when there is none.
    VornObjectASerializableException* getException() const { return exception; }
    /// Takes over `exception`, which must come from the heap. An exception set
    /// before is not deleted: it goes back to the caller.
    VornObjectANotif& setException(VornObjectASerializableException& exception);

protected:
    VornObjectANotif();
    ~VornObjectANotif() override;
    void read(VornJavaRead& in) override;
    void write(VornJavaWrite& out) override;

    VornObjectASerializableException* exception;
    int posExtReasonCode;
};
