#include "qarq/vorn/VornObjectASerializableException.hpp"

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

namespace {

// What clone() makes when it cannot know the concrete class: the same fields
// under the same wire class name, so the copy goes on the stream as the
// original would.
class CopiedException final : public VornObjectASerializableException {
public:
    explicit CopiedException(const VornObjectASerializableException& original)
        : VornObjectASerializableException(original), className_(original.eucClassName()) {}
    IString eucClassName() const override { return className_; }
    VornCloneableObject* clone() const override { return new CopiedException(*this); }

private:
    IString className_;
};

}  // namespace

VornObjectASerializableException::VornObjectASerializableException(int id,
                                                                   const VornJavaString& t1,
                                                                   const VornJavaString& t2,
                                                                   const VornJavaString& t3,
                                                                   const VornJavaString& t4)
    : excId(id), text1(t1), text2(t2), text3(t3), text4(t4) {}

VornObjectASerializableException::VornObjectASerializableException(
    const VornObjectASerializableException& other) = default;

VornObjectASerializableException& VornObjectASerializableException::operator=(
    const VornObjectASerializableException& other) {
    VornCloneableObject::operator=(other);
    excId = other.excId;
    text1 = other.text1;
    text2 = other.text2;
    text3 = other.text3;
    text4 = other.text4;
    return *this;
}

VornObjectASerializableException::~VornObjectASerializableException() = default;

IString VornObjectASerializableException::asString() const {
    return IString("VornObjectASerializableException");
}

IString VornObjectASerializableException::asDebugInfo() const {
    return VornObjectASerializableException::asString() + "[base=" +
           VornCloneableObject::asDebugInfo() + ",excId='" + IString(excId) + "',text1='" + text1 +
           "',text2='" + text2 + "',text3='" + text3 + "',text4='" + text4 + "]";
}

VornCloneableObject* VornObjectASerializableException::clone() const {
    return new CopiedException(*this);
}

void VornObjectASerializableException::read(VornJavaRead& in) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornObjectASerializableException::read");
    VornCloneableObject::read(in);
    excId = in.readInt();
    in.readString(text1);
    in.readString(text2);
    in.readString(text3);
    in.readString(text4);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT,
                     "VornObjectASerializableException::read", pair(excId));
}

void VornObjectASerializableException::write(VornJavaWrite& out) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornObjectASerializableException::write", pair(excId));
    VornCloneableObject::write(out);
    out.writeInt(excId);
    out.writeString(text1);
    out.writeString(text2);
    out.writeString(text3);
    out.writeString(text4);
}
