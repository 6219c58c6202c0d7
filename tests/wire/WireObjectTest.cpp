// Objects on the stream: class name, body, and the null object.
#include <string>

#include <gtest/gtest.h>

#include "qarq/vorn/VornCloneableObject.hpp"
#include "qarq/vorn/VornExcBase.hpp"
#include "wire/WireMessageClasses.hpp"
#include "support/StreamBytes.hpp"
#include "support/TestSupport.hpp"

namespace {

using namespace qarq::support;
using namespace qarq::test;

TEST(WireObject, ClassNameThenBodyAndTheNullObject) {
    Probe caller, probe(7);
    Bare bare;
    Writer w;
    caller.writeObject(w.out, probe);
    caller.writeObject(w.out, static_cast<VornObject*>(nullptr));
    caller.writeObject(w.out, &bare);  // no body of its own: the name alone
    EXPECT_EQ(
        "00 01 00 00 00 0A 00 0A 74 65 73 74 2E 50 72 6F 62 65 00 08 00 00 00 07 "
        "00 01 00 00 00 00 "
        "00 01 00 00 00 09 00 09 74 65 73 74 2E 42 61 72 65",
        w.hex());
}

TEST(WireObject, EmptyNameKeepsTheTargetsDefaults) {
    Reader r(bytes("00 01 00 00 00 00 00 01 00 00 00 00 00 08 00 00 00 03"));
    Probe caller, target;
    caller.readObject(r.in, target);
    caller.readObject(r.in, static_cast<VornObject*>(nullptr));  // nothing to read into, none needed
    EXPECT_EQ(0, target.reads);
    EXPECT_EQ(3, r.in.readInt());
}

TEST(WireObject, AnyNameOrClassHandleReadsTheBody) {
    Reader r(bytes("00 01 00 00 00 05 00 05 6F 74 68 65 72 00 08 00 00 00 01 "
                   "20 00 00 05 00 08 00 00 00 02"));
    Probe caller, target;
    caller.readObject(r.in, &target);
    EXPECT_EQ(1, target.value);
    caller.readObject(r.in, target);
    EXPECT_EQ(2, target.value);
    EXPECT_EQ(2, target.reads);
}

TEST(WireObject, ObjectOnTheStreamWithNothingToReadIntoRaises) {
    Records log;
    Reader r(bytes("00 01 00 00 00 01 00 01 61 00 08 00 00 00 01"));
    Probe caller;
    try {
        caller.readObject(r.in, static_cast<VornObject*>(nullptr));
        FAIL() << "no exception";
    } catch (const VornExcBase& e) {
        EXPECT_EQ(1u, log.errorsOf("VornObject::readObject"));
        // The family's log names the class; the name read is in the texts.
        EXPECT_EQ(1u, log.errorsMentioning("VornJavaExcNullObject"));
        EXPECT_EQ(std::string("Class: a"), e.text(0));
    }
    EXPECT_EQ(9u, r.used());  // the name is read, the body is not
}

TEST(WireObject, BadTagBeforeTheObjectReadsNothingOfIt) {
    Reader r(bytes("00 80 00 00 00 00"));
    Probe caller, target;
    EXPECT_THROW(caller.readObject(r.in, target), VornExcBase);
    EXPECT_EQ(0, target.reads);
}

}  // namespace
