// Concrete classes over the abstract wire classes, as a program would write
// them, with their protected fields opened for the tests.
#pragma once

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "qarq/vorn/VornObject.hpp"
#include "qarq/vorn/VornObjectANotif.hpp"
#include "qarq/vorn/VornObjectARequest.hpp"
#include "qarq/vorn/VornObjectAResponse.hpp"
#include "qarq/vorn/VornObjectASerializableException.hpp"
#include "support/CodesetEnvironment.hpp"

namespace qarq::test {

/// An object with one int field that counts the reads of its body.
class Probe : public VornObject {
public:
    explicit Probe(int v = 11) : value(v) {}
    IString eucClassName() const override { return IString("test.Probe"); }
    void read(VornJavaRead& in) override {
        VornObject::read(in);
        ++reads;
        value = in.readInt();
    }
    void write(VornJavaWrite& out) override {
        VornObject::write(out);
        out.writeInt(value);
    }
    int value;
    int reads = 0;
};

/// An object that overrides neither read nor write.
class Bare : public VornObject {
public:
    IString eucClassName() const override { return IString("test.Bare"); }
};

class TestException : public VornObjectASerializableException {
public:
    explicit TestException(int id = 0, const char* t1 = "", const char* t2 = "",
                           const char* t3 = "", const char* t4 = "", const char* name = "test.Exc")
        : VornObjectASerializableException(id, t1, t2, t3, t4), name_(name) {}
    IString eucClassName() const override { return name_; }
    using VornObjectASerializableException::read;
    using VornObjectASerializableException::write;

private:
    IString name_;
};

template <typename Base>
class Opened : public Base {
public:
    template <typename... Args>
    explicit Opened(Args... args) : Base(args...) {}
    using Base::read;
    using Base::write;
    void setHosts(const char* s, const char* t) {
        this->sHost = VornJavaString(s);
        this->tHost = VornJavaString(t);
    }
    void setClient(int c) { this->client = c; }
    int kind() const { return this->type; }
    int clientId() const { return this->client; }
};

class TestRequest : public Opened<VornObjectARequest> {
public:
    explicit TestRequest(int correlator = 0) : Opened(correlator) {}
    void process() override {}
    IString eucClassName() const override { return IString("test.Request"); }
};

class TestResponse : public Opened<VornObjectAResponse> {
public:
    explicit TestResponse(int correlator = 0) : Opened(correlator) {}
    IString eucClassName() const override { return IString("test.Response"); }
};

class TestNotif : public Opened<VornObjectANotif> {
public:
    IString eucClassName() const override { return IString("test.Notif"); }
};

}  // namespace qarq::test
