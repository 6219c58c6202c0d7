// Requests, responses, notifications and their exception objects.
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "qarq/vorn/VornExcBase.hpp"
#include "wire/WireMessageClasses.hpp"
#include "support/StreamBytes.hpp"
#include "support/TestSupport.hpp"

namespace {

using namespace qarq::support;
using namespace qarq::test;

const char kEmptyHosts[] = "00 80 00 00 00 00 00 80 00 00 00 00 ";
const char kExcBody[] =
    "00 01 00 00 00 08 00 08 74 65 73 74 2E 45 78 63 "  // class "test.Exc"
    "00 08 00 00 00 2A "                                 // excId 42
    "00 80 00 00 00 01 00 01 61 00 80 00 00 00 00 "      // "a", ""
    "00 80 00 00 00 00 00 80 00 00 00 01 00 01 64";      // "", "d"

TEST(WireMessage, RequestBody) {
    TestRequest request(7);
    request.setHosts("a", "b");
    Writer w;
    request.write(w.out);
    EXPECT_EQ(
        "00 80 00 00 00 01 00 01 61 00 80 00 00 00 01 00 01 62 00 08 00 00 00 01 "
        "00 08 00 00 00 00 00 08 00 00 00 07",
        w.hex());

    // The kind is a field like any other: a peer's 2 stands in a request.
    Reader r(bytes(std::string(kEmptyHosts) + "00 08 00 00 00 02 00 08 00 00 00 05 00 08 00 00 00 09"));
    TestRequest back;
    back.read(r.in);
    EXPECT_EQ(2, back.kind());
}

TEST(WireMessage, ResponseDefaultsAndBody) {
    // The defaults are in the bytes: kind 2, correlator 0, reason 0, no exception.
    TestResponse response;
    Writer w;
    response.write(w.out);
    EXPECT_EQ(std::string(kEmptyHosts) +
                  "00 08 00 00 00 02 00 08 00 00 00 00 00 08 00 00 00 00 00 08 00 00 00 00 "
                  "00 01 00 00 00 00",
              w.hex());

    TestNotif notif;
    notif.setPosExtReasonCode(-4);
    notif.setException(*new TestException(42, "a", "", "", "d"));
    EXPECT_EQ(-4, notif.getPosReasonCode());
    Writer n;
    notif.write(n.out);
    EXPECT_EQ(std::string(kEmptyHosts) +
                  "00 08 00 00 00 03 00 08 00 00 00 00 00 08 FF FF FF FC " + kExcBody,
              n.hex());
}

TEST(WireMessage, ReadIntoThePresetExceptionObject) {
    const std::string head =
        std::string(kEmptyHosts) + "00 08 00 00 00 02 00 08 00 00 00 00 00 08 00 00 00 07 00 08 00 00 00 05 ";
    TestResponse response;
    auto* preset = new TestException(1, "p1", "p2", "p3", "p4");
    response.setException(*preset);
    Reader r(bytes(head + kExcBody));
    response.read(r.in);
    EXPECT_EQ(preset, response.getException());
    // What was read goes out again as it came.
    Writer again;
    response.write(again.out);
    EXPECT_EQ(hex(bytes(head + kExcBody)), again.hex());

    // The empty class name leaves the preset object as it stood.
    TestResponse keeps;
    auto* untouched = new TestException(1, "p1", "p2", "p3", "p4");
    keeps.setException(*untouched);
    Reader e(bytes(head + "00 01 00 00 00 00"));
    keeps.read(e.in);
    EXPECT_EQ(untouched, keeps.getException());
    EXPECT_EQ(IString("p4"), untouched->getText4());
}

TEST(WireMessage, ExceptionOnTheStreamWithNoObjectSetRaises) {
    Records log;
    TestResponse response;
    Reader r(bytes(std::string(kEmptyHosts) +
                   "00 08 00 00 00 02 00 08 00 00 00 00 00 08 00 00 00 07 00 08 00 00 00 05 " +
                   kExcBody));
    EXPECT_THROW(response.read(r.in), VornExcBase);
    EXPECT_EQ(7, response.getCorrelator());  // the fields before it stand
    EXPECT_EQ(5, response.getPosReasonCode());
    EXPECT_EQ(nullptr, response.getException());
    EXPECT_EQ(1u, log.errorsMentioning("VornJavaExcNullObject"));
}

TEST(WireMessage, SetExceptionTwiceGivesTheFirstBackToTheCaller) {
    std::unique_ptr<TestException> first(new TestException(1));
    {
        TestResponse response;
        response.setException(*first);
        response.setException(*new TestException(2));
        EXPECT_EQ(2, response.getException()->getExcId());
    }  // deletes the second only: the first is still ours (ASan tells otherwise)
    EXPECT_EQ(1, first->getExcId());
}

TEST(WireMessage, CopiesOwnCopiesOfTheirException) {
    TestResponse original(9);
    original.setHosts("s", "t");
    original.setPosExtReasonCode(3);
    original.setException(*new TestException(5, "x", "", "", "", "test.Other"));

    // The copy goes on the wire as the original does, with an exception of its own.
    TestResponse copy(original);
    EXPECT_NE(original.getException(), copy.getException());
    Writer a, b;
    original.write(a.out);
    copy.write(b.out);
    EXPECT_EQ(a.hex(), b.hex());

    // Assignment releases what the target held (ASan tells otherwise).
    TestResponse target;
    target.setException(*new TestException(6));
    target = original;
    EXPECT_EQ(5, target.getException()->getExcId());
    EXPECT_NE(original.getException(), target.getException());
    TestResponse none;
    target = none;
    EXPECT_EQ(nullptr, target.getException());
}

}  // namespace
