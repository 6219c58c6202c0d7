#include "base/IStaticRefCountRemover.hpp"

IStaticRefCountRemover::~IStaticRefCountRemover() {
    if (ivObject != nullptr)
        ivObject->removeRef();
}
