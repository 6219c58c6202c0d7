// The root of everything the library throws.
//
// An exception carries a severity, an error id (0 for none), a stack of
// texts (index 0 is the newest), up to five locations (the first four added
// and the newest one) and an error-code group. Its report goes through the
// current trace function (setTraceFunction), which a program may replace.
//
// Failures: no constructor or setter lets an exception escape. If the data
// record can't be allocated the exception reads as unrecoverable, id 0, no
// texts and no locations; a text or location that can't be stored is
// dropped. Threads: an exception belongs to the thread that handles it. The
// trace function is read without a lock and replaced under a private lock;
// its write may be called from several threads at once.
#pragma once

#include <cstdint>

#include "qarq/base/IExceptionLocation.hpp"
#include "qarq/export.hpp"

class QARQ_API IException {
public:
    enum Severity { unrecoverable = 0, recoverable = 1 };

    /// Receives the reports of exceptions.
    class QARQ_API TraceFn {
    public:
        TraceFn();
        virtual ~TraceFn();
        /// The one output point: the text and a newline on standard error.
        virtual void write(const char* text);
        /// Converts to narrow text and calls write.
        virtual void writeWide(const wchar_t* text);
        /// The report of an exception, one write a line.
        virtual void logData(IException& exception);
        /// Calls logData.
        virtual void logDataWide(IException& exception);
        /// Called once at the end of each report made through write.
        virtual void exceptionLogged();

    private:
        TraceFn(const TraceFn&);
        TraceFn& operator=(const TraceFn&);
    };

    /// A null text leaves the stack empty; any other text is entry 0.
    explicit IException(const char* text, uint32_t errorId = 0,
                        Severity severity = unrecoverable);
    explicit IException(const wchar_t* text, uint32_t errorId = 0,
                        Severity severity = unrecoverable);
    /// Deep: severity, id, locations, the whole text stack, the group.
    IException(const IException& other);
    virtual ~IException();

    /// severity != unrecoverable.
    virtual bool isRecoverable() const;
    /// Copies `location` into the next slot; the fifth slot is overwritten
    /// once all five are taken.
    virtual IException& addLocation(const IExceptionLocation& location);
    virtual const char* name() const;
    virtual const wchar_t* wideName() const;
    /// Ends the process through std::terminate.
    [[noreturn]] virtual void terminate();
    virtual IException& logExceptionData();
    virtual IException& logExceptionDataWide();

    uint32_t errorId() const;
    const char* errorCodeGroup() const;
    uint32_t textCount() const;
    /// Entry `index` (0 newest); null at or past textCount.
    const char* text(uint32_t index = 0) const;
    const wchar_t* wideText(uint32_t index = 0) const;
    uint32_t locationCount() const;
    /// Location `index` (0 the first added); null at or past locationCount.
    const IExceptionLocation* locationAtIndex(uint32_t index) const;

    /// Adds to the newest entry (or pushes one on an empty stack).
    IException& appendText(const char* text);
    IException& appendText(const wchar_t* text);
    /// Pushes a new newest entry.
    IException& setText(const char* text);
    IException& setText(const wchar_t* text);
    /// The group is stored by pointer: it must outlive the exception.
    IException& setErrorCodeGroup(const char* group);
    IException& setSeverity(Severity severity);
    IException& setErrorId(uint32_t errorId);

    /// Replaces the current trace function (null: back to the default) and
    /// returns the one that was current.
    static TraceFn* setTraceFunction(TraceFn* traceFunction);
    /// The current trace function.
    static TraceFn* traceFunction();

    static const char* const baseLibrary;    ///< "ZTH Foundation Library"
    static const char* const CLibrary;       ///< "Standard C Library"
    static const char* const operatingSystem;///< "Operating System"
    static const char* const presentationSystem; ///< "Presentation System"
    static const char* const other;          ///< "Other Error Group"

private:
    IException& operator=(const IException&);
    struct Data;
    Data* ivData;
};
