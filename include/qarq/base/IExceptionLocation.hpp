// One place in the code: file name, function name and line.
//
// The names are copied (narrow or wide); copy and assignment are deep. When
// the record can't be allocated the location reads as "Unknown", no file and
// line 0, and nothing throws. Threads: one owner at a time.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

class ISimpleText;

class QARQ_API IExceptionLocation {
public:
    /// Both names null and line 0.
    IExceptionLocation();
    IExceptionLocation(const char* fileName, const char* functionName, uint32_t lineNumber);
    IExceptionLocation(const wchar_t* fileName, const wchar_t* functionName,
                       uint32_t lineNumber);
    IExceptionLocation(const IExceptionLocation& other);
    IExceptionLocation& operator=(const IExceptionLocation& other);
    ~IExceptionLocation();

    /// Null when there is no name.
    const char* fileName() const;
    const wchar_t* wideFileName() const;
    /// "Unknown" (L"Unknown") when there is no name.
    const char* functionName() const;
    const wchar_t* wideFunctionName() const;
    uint32_t lineNumber() const;

    struct Record;  ///< opaque

private:
    Record* ivRecord;
};
