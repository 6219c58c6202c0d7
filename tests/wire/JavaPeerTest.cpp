// Round trips with the Java test peer (java/): what this library writes, a
// JDK's DataInputStream reads, and the other way round. Skipped, saying why,
// when the build found no JDK.
#include <sys/wait.h>

#include <cstdint>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "qarq/vorn/VornJavaByteArray.hpp"
#include "wire/WireMessageClasses.hpp"
#include "support/StreamBytes.hpp"
#include "support/TestSupport.hpp"

namespace {

using qarq::support::readFile;
using qarq::support::Reader;
using qarq::support::shellQuoted;
using qarq::support::Writer;

// The values both sides agree on, here in the default code set (1252).
const char kSHost[] = "console-7";
const char kTHost[] = "server-1";
const int kClient = 12;
const int kCorrelator = 7;
const char kText[] = "Gr\xFC\xDF" "e, 5 \x80 f\xFCr Caf\xE9";
const char kPayload[] = {0, 1, 0x7F, '\x80', '\xFF'};
const int64_t kStamp = -2;
const short kSmall = -300;
const char kSingle = '\xAB';

class PeerException : public qarq::test::TestException {
public:
    PeerException() : TestException(0, "", "", "", "", "qarq.peer.PeerException") {}
};

class EchoRequest : public qarq::test::Opened<VornObjectARequest> {
public:
    EchoRequest() : Opened(0) {}
    void process() override {}
    IString eucClassName() const override { return IString("qarq.peer.EchoRequest"); }
    void write(VornJavaWrite& out) override {
        VornObjectARequest::write(out);
        out.writeString(text).writeString(note).writeByteArray(payload).writeLong(stamp);
        out.writeBoolean(flag).writeShort(small).writeByte(single);
    }
    VornJavaString text, note;
    VornJavaByteArray payload;
    int64_t stamp = 0;
    int flag = 0;
    short small = 0;
    char single = 0;
};

class EchoResponse : public qarq::test::Opened<VornObjectAResponse> {
public:
    EchoResponse() : Opened(0) {}
    IString eucClassName() const override { return IString("qarq.peer.EchoResponse"); }
    void read(VornJavaRead& in) override {
        VornObjectAResponse::read(in);
        in.readString(echo);
        in.readByteArray(reversed);
    }
    VornJavaString echo;
    VornJavaByteArray reversed;
};

class JavaPeer : public ::testing::Test {
protected:
    void SetUp() override {
        std::ifstream conf(std::string(QARQ_BUILD_DIR) + "/java/peer.conf");
        if (!std::getline(conf, java_) || !std::getline(conf, classes_))
            GTEST_SKIP() << "No JDK was found when the build was configured: "
                            "the Java peer is not built and the interop round trip is not run";
        ASSERT_FALSE(dir_.path().empty());
    }

    // Runs the peer; its complaints are the failure message.
    void peer(const std::string& arguments) {
        const std::string errors = dir_ / "peer.err";
        const std::string command = shellQuoted(java_) + " -cp " + shellQuoted(classes_) +
                                    " qarq.peer.WirePeer " + arguments + " >/dev/null 2>" +
                                    shellQuoted(errors);
        const int status = std::system(command.c_str());
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
            << "peer " << arguments << " failed:\n"
            << readFile(errors);
    }

    std::string file(const char* name) const { return dir_ / name; }

    static void fill(EchoRequest& request) {
        request.setHosts(kSHost, kTHost);
        request.setClient(kClient);
        request.setCorrelator(kCorrelator);
        request.text = VornJavaString(kText);
        request.payload.copyBytes(kPayload, sizeof kPayload);
        request.stamp = kStamp;
        request.flag = 1;
        request.small = kSmall;
        request.single = kSingle;
    }

    std::string java_, classes_;
    qarq::support::TempDir dir_{"qarq-peer"};
};

TEST_F(JavaPeer, SelfTestOfTheWireExamples) { peer("selftest"); }

// One round trip each way: the peer checks our request field by field and
// against its own writing of it; we read its response.
TEST_F(JavaPeer, RequestThereResponseWithExceptionBack) {
    EchoRequest request;
    fill(request);
    Writer w;
    request.writeObject(w.out, request);
    qarq::support::writeFile(file("request.bin"), w.bytes());
    peer("respond " + shellQuoted(file("request.bin")) + " " + shellQuoted(file("response.bin")));

    Reader r(readFile(file("response.bin")));
    EXPECT_EQ(IString("qarq.peer.EchoResponse"), r.in.readClass());
    EchoResponse response;
    auto* exception = new PeerException;
    response.setException(*exception);
    response.read(r.in);
    EXPECT_EQ(r.in.getLength(), r.used());
    EXPECT_EQ(IString(kTHost), response.getSHost());
    EXPECT_EQ(IString(kSHost), response.getTHost());
    EXPECT_EQ(kCorrelator, response.getCorrelator());
    EXPECT_EQ(4711, response.getPosReasonCode());
    ASSERT_EQ(exception, response.getException());
    EXPECT_EQ(42, exception->getExcId());
    EXPECT_EQ(IString("Zugriff verweigert: Gr\xF6\xDF" "e"), exception->getText1());
    EXPECT_EQ(IString(""), exception->getText2());
    EXPECT_EQ(IString("\x80"), exception->getText3());
    EXPECT_EQ(IString("tab\there"), exception->getText4());
    EXPECT_EQ(IString(kText), response.echo);
    const char reversed[] = {'\xFF', '\x80', 0x7F, 1, 0};
    EXPECT_EQ(std::string(reversed, sizeof reversed),
              std::string(response.reversed.getBytes(), response.reversed.getLength()));
}

}  // namespace
