#include "qarq/base/IExceptionClasses.hpp"

#define QARQ_DEFINE_BASE_EXCEPTION(Class, Base)                                          \
    Class::Class(const char* text, uint32_t errorId, Severity severity)                  \
        : Base(text, errorId, severity) {}                                               \
    Class::Class(const wchar_t* text, uint32_t errorId, Severity severity)               \
        : Base(text, errorId, severity) {}                                               \
    Class::Class(const Class& other) = default;                                          \
    Class::~Class() = default;                                                           \
    const char* Class::name() const { return #Class; }                                   \
    const wchar_t* Class::wideName() const { return L"" #Class; }

QARQ_DEFINE_BASE_EXCEPTION(IAccessError, IException)
QARQ_DEFINE_BASE_EXCEPTION(IDeviceError, IException)
QARQ_DEFINE_BASE_EXCEPTION(IInvalidParameter, IException)
QARQ_DEFINE_BASE_EXCEPTION(IInvalidRequest, IException)
QARQ_DEFINE_BASE_EXCEPTION(IResourceExhausted, IException)
QARQ_DEFINE_BASE_EXCEPTION(IOutOfSystemResource, IResourceExhausted)
QARQ_DEFINE_BASE_EXCEPTION(IOutOfWindowResource, IResourceExhausted)
QARQ_DEFINE_BASE_EXCEPTION(IOutOfMemory, IResourceExhausted)
QARQ_DEFINE_BASE_EXCEPTION(IAssertionFailure, IException)
