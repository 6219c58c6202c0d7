// The root of the library's own exception family.
//
// A class of the family derives from VornExcBase, overrides name, and ends
// its constructor in throwExc: constructing it is the throw. throwExc adds
// the texts and the place, writes one error record through the diagnostics
// library, and throws a VornExcBase copy, so a catch names VornExcBase or
// IException; the subclass's name shows in the record only.
//
// Failures: as IException (nothing escapes while an exception is built).
// Threads: an exception belongs to the thread that handles it.
#pragma once

#include <cstdint>

#include "qarq/base/IException.hpp"
#include "qarq/base/IString.hpp"
#include "qarq/export.hpp"

class QARQ_API VornExcBase : public IException {
public:
    static const uint32_t defId;             ///< 0
    static const IException::Severity defSev; ///< recoverable
    static const char* const msgSpacing;     ///< "\n"
    static const char* const begItem;        ///< "["
    static const char* const endItem;        ///< "] "
    static const char* const funcTrunc;      ///< ".."
    static const char* const funcIn;         ///< ":"
    static const char* const tExc;           ///< ", Exc: "
    static const char* const tId;            ///< "Id: "
    static const char* const tRec;           ///< ", Rec?: "
    static const char* const tText;          ///< "Text"
    static const char* const tLoc;           ///< "Loc"

    ~VornExcBase() override;

    /// Adds the texts (the first joins the newest entry, each further one is
    /// pushed), adds the location, logs, and throws a VornExcBase copy.
    [[noreturn]] void throwExc(const IExceptionLocation& location);
    [[noreturn]] void throwExc(const IString& t1, const IExceptionLocation& location);
    [[noreturn]] void throwExc(const IString& t1, const IString& t2,
                               const IExceptionLocation& location);
    [[noreturn]] void throwExc(const IString& t1, const IString& t2, const IString& t3,
                               const IExceptionLocation& location);
    [[noreturn]] void throwExc(const IString& t1, const IString& t2, const IString& t3,
                               const IString& t4, const IExceptionLocation& location);

    /// Logs this exception with no location ("logAnExc", line 629).
    VornExcBase& log();
    /// Logs any caught exception under the catching place's name and line.
    static void logOnCatch(const IException& exception, const IExceptionLocation& location);

    /// "Id: <id>, Rec?: <0|1>, Exc: <class>\n".
    static IString formatExc(const IException& exception);
    /// "Text[<i>] <text>\n" for each entry, newest first.
    static IString formatText(const IException& exception);
    /// "Loc[<i>] <line>:<file>:<function>\n" for each location, first first.
    static IString formatLocation(const IException& exception);

    const char* name() const override;
    const wchar_t* wideName() const override;

protected:
    explicit VornExcBase(const IString& text = IString(""), uint32_t id = defId,
                         IException::Severity sev = defSev);
    VornExcBase(const VornExcBase& other);
};
