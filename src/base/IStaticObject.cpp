#include "qarq/base/IStaticObject.hpp"

#include "base/IStaticObjectList.hpp"

IStaticObject::IStaticObject() { IStaticObjectList::process().add(this); }

IStaticObject::IStaticObject(IStaticObjectList& list) { list.add(this); }

IStaticObject::~IStaticObject() = default;
