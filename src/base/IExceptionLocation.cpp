#include "qarq/base/IExceptionLocation.hpp"

#include <new>

#include "qarq/base/ISimpleText.hpp"
#include "qarq/base/Os.hpp"

struct IExceptionLocation::Record {
    ISimpleText fileName;
    ISimpleText functionName;
    uint32_t lineNumber = 0;
};

namespace {

void dropRecord(IExceptionLocation::Record*& record);

}  // namespace

// The record lives in memory from the OS seam so that a test can take it
// away; a location without one reads as unknown.
#define QARQ_NEW_RECORD(...)                                                        \
    [&]() -> Record* {                                                              \
        void* block = qarq::os::calls().malloc(sizeof(Record));                     \
        return block != nullptr ? ::new (block) Record{__VA_ARGS__} : nullptr;      \
    }()

IExceptionLocation::IExceptionLocation() : ivRecord(nullptr) {}

IExceptionLocation::IExceptionLocation(const char* fileName, const char* functionName,
                                       uint32_t lineNumber)
    : ivRecord(QARQ_NEW_RECORD(ISimpleText(fileName), ISimpleText(functionName), lineNumber)) {}

IExceptionLocation::IExceptionLocation(const wchar_t* fileName, const wchar_t* functionName,
                                       uint32_t lineNumber)
    : ivRecord(QARQ_NEW_RECORD(ISimpleText(fileName), ISimpleText(functionName), lineNumber)) {}

IExceptionLocation::IExceptionLocation(const IExceptionLocation& other)
    : ivRecord(other.ivRecord == nullptr ? nullptr : QARQ_NEW_RECORD(*other.ivRecord)) {}

IExceptionLocation& IExceptionLocation::operator=(const IExceptionLocation& other) {
    if (this != &other) {
        Record* copy = other.ivRecord == nullptr ? nullptr : QARQ_NEW_RECORD(*other.ivRecord);
        dropRecord(ivRecord);
        ivRecord = copy;
    }
    return *this;
}

IExceptionLocation::~IExceptionLocation() { dropRecord(ivRecord); }

namespace {

void dropRecord(IExceptionLocation::Record*& record) {
    if (record != nullptr) {
        record->~Record();
        qarq::os::calls().free(record);
        record = nullptr;
    }
}

}  // namespace

const char* IExceptionLocation::fileName() const {
    return ivRecord == nullptr ? nullptr : ivRecord->fileName.text();
}

const wchar_t* IExceptionLocation::wideFileName() const {
    return ivRecord == nullptr ? nullptr : ivRecord->fileName.wideText();
}

const char* IExceptionLocation::functionName() const {
    const char* name = ivRecord == nullptr ? nullptr : ivRecord->functionName.text();
    return name != nullptr ? name : "Unknown";
}

const wchar_t* IExceptionLocation::wideFunctionName() const {
    const wchar_t* name = ivRecord == nullptr ? nullptr : ivRecord->functionName.wideText();
    return name != nullptr ? name : L"Unknown";
}

uint32_t IExceptionLocation::lineNumber() const {
    return ivRecord == nullptr ? 0 : ivRecord->lineNumber;
}
