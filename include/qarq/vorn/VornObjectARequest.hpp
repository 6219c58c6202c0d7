// A request: the message fields and the correlator that ties the response to it.
//
// Body: the message body, then int correlator. process() is what a concrete
// request does and must be supplied. Threads and failures: as
// VornObjectAMessage. A request holds nothing to release.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/VornObjectAMessage.hpp"

class QARQ_API VornObjectARequest : public VornObjectAMessage {
public:
    VornObjectARequest(const VornObjectARequest& other);
    VornObjectARequest& operator=(const VornObjectARequest& other);

    /// "VornObjectARequest".
    IString asString() const override;
    /// asString, "[base=", the VornObjectAMessage text, ",corr=", correlator, "]".
    IString asDebugInfo() const override;
    void process() override = 0;

    int getCorrelator() const { return correlator; }
    VornObjectARequest& setCorrelator(int value);

protected:
    explicit VornObjectARequest(int correlator = 0);
    ~VornObjectARequest() override;
    void read(VornJavaRead& in) override;
    void write(VornJavaWrite& out) override;

    int correlator;
};
