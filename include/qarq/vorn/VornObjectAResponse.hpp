// A response: the message fields, the request's correlator, a reason code and
// the exception object that reports a failure.
//
// Body: the message body, int correlator, int posExtReasonCode, then the
// exception as an object (the empty class name when there is none).
// Ownership: the response owns its exception from setException on and deletes
// it at destruction. A copy owns a copy of the exception (clone()); assignment
// deletes the exception the target held. read() never makes an exception
// object: only the concrete class knows its class, so a subclass that expects
// one sets it before reading; a stream that brings an exception with none set
// raises VornJavaExcNullObject. Threads and failures: as VornObjectAMessage.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornObjectAMessage.hpp"
#include "qarq/vorn/VornObjectASerializableException.hpp"

class QARQ_API VornObjectAResponse : public VornObjectAMessage {
public:
    VornObjectAResponse(const VornObjectAResponse& other);
    VornObjectAResponse& operator=(const VornObjectAResponse& other);

    /// "VornObjectAResponse".
    IString asString() const override;
    /// asString, "[base=", the VornObjectAMessage text, ",corr=", correlator,
    /// ",exc=", the exception's address in hex, "]".
    IString asDebugInfo() const override;

    int getCorrelator() const { return correlator; }
    VornObjectAResponse& setCorrelator(int value);
    int getPosReasonCode() const { return posExtReasonCode; }
    VornObjectAResponse& setPosExtReasonCode(int value);
    /// Still owned by the response; null when there is none.
    VornObjectASerializableException* getException() const { return exception; }
    /// Takes over `exception`, which must come from the heap. An exception set
    /// before is not deleted: it goes back to the caller.
    VornObjectAResponse& setException(VornObjectASerializableException& exception);

protected:
    explicit VornObjectAResponse(int correlator = 0);
    ~VornObjectAResponse() override;
    void read(VornJavaRead& in) override;
    void write(VornJavaWrite& out) override;

    int correlator;
    int posExtReasonCode;
    VornObjectASerializableException* exception;
};
