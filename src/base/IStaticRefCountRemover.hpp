// A static object that gives back one reference at the library's end: it
// holds the process's reference to the default string buffer.
#pragma once

#include "qarq/base/IMRefCounted.hpp"
#include "qarq/base/IStaticObject.hpp"
#include "qarq/export.hpp"

class QARQ_API IStaticRefCountRemover : public IStaticObject {
public:
    /// Takes over one reference of `object`.
    explicit IStaticRefCountRemover(IMRefCounted* object) : ivObject(object) {}
    ~IStaticRefCountRemover() override;

private:
    IMRefCounted* ivObject;
};
