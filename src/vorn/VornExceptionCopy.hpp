// The deep copy of an owned exception object, for the copy and assignment of
// responses and notifications.
#pragma once

#include <memory>

#include "qarq/vorn/VornObjectASerializableException.hpp"

namespace qarq::vorn {

/// A heap copy of `exception` through its clone(), or null for null. A clone
/// that is no exception object (a subclass's fault) is deleted and gives null
/// rather than a wrongly typed owner.
inline VornObjectASerializableException* copyException(
    const VornObjectASerializableException* exception) {
    if (exception == nullptr) return nullptr;
    std::unique_ptr<VornCloneableObject> copy(exception->clone());
    auto* typed = dynamic_cast<VornObjectASerializableException*>(copy.get());
    if (typed != nullptr) copy.release();
    return typed;
}

}  // namespace qarq::vorn
