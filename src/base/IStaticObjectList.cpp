#include "base/IStaticObjectList.hpp"

#include <new>

#include "qarq/base/Os.hpp"

IStaticObjectList::IStaticObjectList() = default;

IStaticObjectList::~IStaticObjectList() {
    deleteAll();
    qarq::os::calls().free(ivEntries);
}

void IStaticObjectList::add(IStaticObject* object) {
    std::lock_guard<std::mutex> hold(ivLock);
    if (ivCount == ivCapacity) {
        unsigned grown = ivCapacity == 0 ? 32 : ivCapacity * 2;
        auto* entries = static_cast<IStaticObject**>(
            qarq::os::calls().realloc(ivEntries, sizeof(IStaticObject*) * grown));
        if (entries == nullptr)
            throw std::bad_alloc();
        ivEntries = entries;
        ivCapacity = grown;
    }
    ivEntries[ivCount++] = object;
}

void IStaticObjectList::deleteAll() {
    for (;;) {
        IStaticObject* last = nullptr;
        {
            std::lock_guard<std::mutex> hold(ivLock);
            if (ivCount == 0)
                return;
            last = ivEntries[--ivCount];
        }
        // Outside the lock: a destructor may register or release other
        // static objects.
        delete last;
    }
}

unsigned IStaticObjectList::count() {
    std::lock_guard<std::mutex> hold(ivLock);
    return ivCount;
}

unsigned IStaticObjectList::capacity() {
    std::lock_guard<std::mutex> hold(ivLock);
    return ivCapacity;
}

IStaticObjectList& IStaticObjectList::process() {
    // Never destroyed itself: emptied by the library's destructor function,
    // so that objects made during other static destructors still find a list.
    static IStaticObjectList* list = new IStaticObjectList();
    return *list;
}

namespace {

__attribute__((destructor)) void emptyStaticObjects() { IStaticObjectList::process().deleteAll(); }

}  // namespace
