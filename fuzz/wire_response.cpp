// Arbitrary bytes read as a response that expects an exception object: a
// hostile stream must end in an exception of the family or a whole response,
// never in a crash, an overread or a leak.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "qarq/base/IException.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornObjectAResponse.hpp"
#include "qarq/vorn/VornObjectASerializableException.hpp"

namespace {

class FuzzException : public VornObjectASerializableException {
public:
    FuzzException() : VornObjectASerializableException(0, "", "", "", "") {}
    IString eucClassName() const override { return IString("fuzz.Exception"); }
};

class FuzzResponse : public VornObjectAResponse {
public:
    IString eucClassName() const override { return IString("fuzz.Response"); }
    using VornObjectAResponse::read;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 1u << 20) return 0;
    char* block = new char[size + 1];
    std::memcpy(block, data, size);
    VornJavaRead in(block, static_cast<unsigned>(size));
    FuzzResponse response;
    response.setException(*new FuzzException);
    try {
        response.readObject(in, response);
        (void)response.asDebugInfo();
        (void)response.getException()->asDebugInfo();
    } catch (const IException&) {
    }
    delete[] in.getBuffer();
    return 0;
}
