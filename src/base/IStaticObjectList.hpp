// The list behind IStaticObject: a growing array (32 entries to begin with,
// doubled when full) guarded by a lock, emptied from the last entry to the
// first. The process-wide list is emptied when the library is unloaded.
#pragma once

#include <mutex>

#include "qarq/base/IStaticObject.hpp"
#include "qarq/export.hpp"

class QARQ_API IStaticObjectList {
public:
    IStaticObjectList();
    /// Deletes what is still registered.
    ~IStaticObjectList();

    /// Registers `object`; the list deletes it in deleteAll.
    void add(IStaticObject* object);
    /// Deletes the entries, last registered first. An object registered while
    /// this runs is deleted too.
    void deleteAll();
    unsigned count();
    unsigned capacity();

    /// The process-wide list.
    static IStaticObjectList& process();

private:
    IStaticObjectList(const IStaticObjectList&) = delete;
    IStaticObjectList& operator=(const IStaticObjectList&) = delete;

    std::mutex ivLock;
    IStaticObject** ivEntries = nullptr;
    unsigned ivCount = 0;
    unsigned ivCapacity = 0;
};
