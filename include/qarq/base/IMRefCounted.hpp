// The reference-count mix-in.
//
// The count starts at 0 in every constructor and is never copied, so a copy
// of a counted object starts unshared. removeRef destroys the object through
// its virtual destructor when the count reaches 0; the object must therefore
// live on the heap in a form that its class's operator delete can release.
// Threads: addRef and removeRef are atomic, so sharers may live on any
// thread; useCount is a plain snapshot.
#pragma once

#include <atomic>
#include <cstdint>

#include "qarq/export.hpp"

class QARQ_API IMRefCounted {
public:
    virtual ~IMRefCounted();

    void addRef() { refs.fetch_add(1, std::memory_order_relaxed); }
    void removeRef() {
        // acq_rel: the last owner must see every write of the others before
        // it destroys the object.
        if (refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }
    uint32_t useCount() const { return refs.load(std::memory_order_relaxed); }

protected:
    IMRefCounted() : refs(0) {}
    IMRefCounted(const IMRefCounted&) : refs(0) {}
    IMRefCounted& operator=(const IMRefCounted&) { return *this; }

private:
    std::atomic<uint32_t> refs;
};
