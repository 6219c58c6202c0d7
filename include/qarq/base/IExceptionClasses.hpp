// The concrete exception classes of the base classes.
//
// Each only names itself; everything else is IException's. They are caught by
// their own class or any base: IOutOfMemory is also an IResourceExhausted.
// Failures and threads: as IException.
#pragma once

#include "qarq/base/IException.hpp"
#include "qarq/export.hpp"

#define QARQ_DECLARE_BASE_EXCEPTION(Class, Base)                                           \
    class QARQ_API Class : public Base {                                                   \
    public:                                                                                \
        explicit Class(const char* text, uint32_t errorId = 0,                             \
                       Severity severity = unrecoverable);                                 \
        explicit Class(const wchar_t* text, uint32_t errorId = 0,                          \
                       Severity severity = unrecoverable);                                 \
        Class(const Class& other);                                                         \
        ~Class() override;                                                                 \
        const char* name() const override;                                                 \
        const wchar_t* wideName() const override;                                          \
    }

QARQ_DECLARE_BASE_EXCEPTION(IAccessError, IException);
QARQ_DECLARE_BASE_EXCEPTION(IDeviceError, IException);
QARQ_DECLARE_BASE_EXCEPTION(IInvalidParameter, IException);
QARQ_DECLARE_BASE_EXCEPTION(IInvalidRequest, IException);
QARQ_DECLARE_BASE_EXCEPTION(IResourceExhausted, IException);
QARQ_DECLARE_BASE_EXCEPTION(IOutOfSystemResource, IResourceExhausted);
QARQ_DECLARE_BASE_EXCEPTION(IOutOfWindowResource, IResourceExhausted);
QARQ_DECLARE_BASE_EXCEPTION(IOutOfMemory, IResourceExhausted);
QARQ_DECLARE_BASE_EXCEPTION(IAssertionFailure, IException);

#undef QARQ_DECLARE_BASE_EXCEPTION
