// Objects that live until the library's end.
//
// A static object registers itself in one process-wide list when made; at
// process end the list deletes its entries from the last registered to the
// first, so an object registered later (which may use an earlier one) goes
// first. Objects must be made with new.
// Threads: registration takes the list's lock and may run on any thread.
#pragma once

#include "qarq/export.hpp"

class IStaticObjectList;

class QARQ_API IStaticObject {
public:
    /// Registers this object with the process-wide list.
    IStaticObject();
    virtual ~IStaticObject();

protected:
    /// Registers this object with `list` instead (a list of its own).
    explicit IStaticObject(IStaticObjectList& list);

private:
    IStaticObject(const IStaticObject&);
    IStaticObject& operator=(const IStaticObject&);
};
