#include "qarq/base/IException.hpp"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>

#include "qarq/base/IExceptTraceFn.hpp"
#include "qarq/base/ISimpleText.hpp"
#include "qarq/base/IStaticObject.hpp"
#include "qarq/base/Os.hpp"

const char* const IException::baseLibrary = "ZTH Foundation Library";
const char* const IException::CLibrary = "Standard C Library";
const char* const IException::operatingSystem = "Operating System";
const char* const IException::presentationSystem = "Presentation System";
const char* const IException::other = "Other Error Group";

namespace {

constexpr uint32_t kMaxLocations = 5;

struct TextNode {
    TextNode(const ISimpleText& t, TextNode* n) : text(t), next(n) {}
    ISimpleText text;
    TextNode* next;
};

// Records and nodes come from the OS seam so that tests can take memory
// away; nothing here may throw.
template <typename T, typename... Args>
T* make(Args&&... args) {
    void* block = qarq::os::calls().malloc(sizeof(T));
    return block != nullptr ? ::new (block) T(std::forward<Args>(args)...) : nullptr;
}

template <typename T>
void unmake(T* object) {
    if (object != nullptr) {
        object->~T();
        qarq::os::calls().free(object);
    }
}

std::atomic<IException::TraceFn*> gCurrentTraceFn{nullptr};
std::atomic<IException::TraceFn*> gDefaultTraceFn{nullptr};

std::mutex& exceptionLock() {
    static std::mutex* lock = new std::mutex();
    return *lock;
}

// Gives the default trace function back at the library's end.
class DefaultTraceFnRemover : public IStaticObject {
  public:
    ~DefaultTraceFnRemover() override {
        IException::TraceFn* fn = gDefaultTraceFn.exchange(nullptr);
        delete fn;
    }
};

IException::TraceFn* defaultTraceFn() {
    IException::TraceFn* fn = gDefaultTraceFn.load(std::memory_order_acquire);
    if (fn != nullptr)
        return fn;
    std::lock_guard<std::mutex> hold(exceptionLock());
    fn = gDefaultTraceFn.load(std::memory_order_acquire);
    if (fn == nullptr) {
        fn = new (std::nothrow) IExceptTraceFn();
        if (fn == nullptr) {
            static IExceptTraceFn lastResort;
            return &lastResort;
        }
        gDefaultTraceFn.store(fn, std::memory_order_release);
        try {
            new DefaultTraceFnRemover();
        } catch (...) {
            // Without a remover the default lives to the process's end.
        }
    }
    return fn;
}

}  // namespace

struct IException::Data {
    Data(Severity s, uint32_t id) : severity(s), errorId(id) {}
    Data(const Data&) = delete;
    Data& operator=(const Data&) = delete;

    Severity severity;
    uint32_t errorId;
    IExceptionLocation locations[kMaxLocations];
    uint32_t locationCount = 0;
    uint32_t textCount = 0;
    TextNode* topText = nullptr;
    const char* errorCodeGroup = IException::baseLibrary;

    ~Data() {
        while (topText != nullptr) {
            TextNode* older = topText->next;
            unmake(topText);
            topText = older;
        }
    }
};

IException::IException(const char* text, uint32_t errorId, Severity severity)
    : ivData(make<Data>(severity, errorId)) {
    if (ivData != nullptr) {
        ivData->errorCodeGroup = baseLibrary;
        setText(text);
    }
}

IException::IException(const wchar_t* text, uint32_t errorId, Severity severity)
    : ivData(make<Data>(severity, errorId)) {
    if (ivData != nullptr) {
        ivData->errorCodeGroup = baseLibrary;
        setText(text);
    }
}

IException::IException(const IException& other) : ivData(nullptr) {
    if (other.ivData == nullptr)
        return;
    const Data& from = *other.ivData;
    ivData = make<Data>(from.severity, from.errorId);
    if (ivData == nullptr)
        return;
    for (uint32_t i = 0; i < from.locationCount; ++i)
        ivData->locations[i] = from.locations[i];
    ivData->locationCount = from.locationCount;
    ivData->errorCodeGroup = from.errorCodeGroup;
    // The stack is copied oldest first so that it keeps its order.
    TextNode** tail = &ivData->topText;
    for (TextNode* node = from.topText; node != nullptr; node = node->next) {
        TextNode* copy = make<TextNode>(node->text, nullptr);
        if (copy == nullptr)
            break;
        *tail = copy;
        tail = &copy->next;
        ++ivData->textCount;
    }
}

IException::~IException() {
    unmake(ivData);
}

bool IException::isRecoverable() const {
    return ivData != nullptr && ivData->severity != unrecoverable;
}

IException& IException::addLocation(const IExceptionLocation& location) {
    if (ivData == nullptr)
        return *this;
    // When all slots are taken the newest replaces the last one, so the
    // first four places and the newest survive.
    uint32_t slot =
        ivData->locationCount < kMaxLocations ? ivData->locationCount++ : kMaxLocations - 1;
    ivData->locations[slot] = location;
    return *this;
}

const char* IException::name() const {
    return "IException";
}
const wchar_t* IException::wideName() const {
    return L"IException";
}

void IException::terminate() {
    std::terminate();
}

IException& IException::logExceptionData() {
    traceFunction()->logData(*this);
    return *this;
}

IException& IException::logExceptionDataWide() {
    traceFunction()->logDataWide(*this);
    return *this;
}

uint32_t IException::errorId() const {
    return ivData == nullptr ? 0 : ivData->errorId;
}

const char* IException::errorCodeGroup() const {
    return ivData == nullptr ? baseLibrary : ivData->errorCodeGroup;
}

uint32_t IException::textCount() const {
    return ivData == nullptr ? 0 : ivData->textCount;
}

namespace {

TextNode* nodeAt(TextNode* top, uint32_t count, uint32_t index) {
    if (index >= count)
        return nullptr;
    while (index-- > 0 && top != nullptr)
        top = top->next;
    return top;
}

}  // namespace

const char* IException::text(uint32_t index) const {
    if (ivData == nullptr)
        return nullptr;
    TextNode* node = nodeAt(ivData->topText, ivData->textCount, index);
    return node == nullptr ? nullptr : node->text.text();
}

const wchar_t* IException::wideText(uint32_t index) const {
    if (ivData == nullptr)
        return nullptr;
    TextNode* node = nodeAt(ivData->topText, ivData->textCount, index);
    return node == nullptr ? nullptr : node->text.wideText();
}

uint32_t IException::locationCount() const {
    return ivData == nullptr ? 0 : ivData->locationCount;
}

const IExceptionLocation* IException::locationAtIndex(uint32_t index) const {
    if (ivData == nullptr || index >= ivData->locationCount)
        return nullptr;
    return &ivData->locations[index];
}

namespace {

template <typename Char>
void pushText(TextNode*& top, uint32_t& count, const Char* text) {
    TextNode* node = make<TextNode>(ISimpleText(text), top);
    if (node == nullptr)
        return;  // no memory: the text is dropped
    top = node;
    ++count;
}

// With no text yet, appending is setting the first one.
template <typename Char>
IException& appendToTop(IException& exception, TextNode* top, const Char* text) {
    if (text == nullptr)
        return exception;
    if (top == nullptr)
        return exception.setText(text);
    top->text.append(text);
    return exception;
}

}  // namespace

IException& IException::appendText(const char* text) {
    return ivData != nullptr ? appendToTop(*this, ivData->topText, text) : *this;
}

IException& IException::appendText(const wchar_t* text) {
    return ivData != nullptr ? appendToTop(*this, ivData->topText, text) : *this;
}

IException& IException::setText(const char* text) {
    if (ivData != nullptr && text != nullptr)
        pushText(ivData->topText, ivData->textCount, text);
    return *this;
}

IException& IException::setText(const wchar_t* text) {
    if (ivData != nullptr && text != nullptr)
        pushText(ivData->topText, ivData->textCount, text);
    return *this;
}

IException& IException::setErrorCodeGroup(const char* group) {
    if (ivData != nullptr)
        ivData->errorCodeGroup = group;
    return *this;
}

IException& IException::setSeverity(Severity severity) {
    if (ivData != nullptr)
        ivData->severity = severity;
    return *this;
}

IException& IException::setErrorId(uint32_t errorId) {
    if (ivData != nullptr)
        ivData->errorId = errorId;
    return *this;
}

IException::TraceFn* IException::traceFunction() {
    TraceFn* current = gCurrentTraceFn.load(std::memory_order_acquire);
    return current != nullptr ? current : defaultTraceFn();
}

IException::TraceFn* IException::setTraceFunction(TraceFn* traceFunction) {
    TraceFn* fallback = defaultTraceFn();
    std::lock_guard<std::mutex> hold(exceptionLock());
    TraceFn* previous = gCurrentTraceFn.exchange(traceFunction, std::memory_order_acq_rel);
    return previous != nullptr ? previous : fallback;
}

// ---- the trace function -------------------------------------------------

IException::TraceFn::TraceFn() = default;
IException::TraceFn::~TraceFn() = default;

void IException::TraceFn::write(const char* text) {
    std::fprintf(stderr, "%s\n", text != nullptr ? text : "");
}

void IException::TraceFn::writeWide(const wchar_t* text) {
    ISimpleText narrowed(text);
    write(narrowed.text());
}

void IException::TraceFn::logDataWide(IException& exception) {
    logData(exception);
}

void IException::TraceFn::exceptionLogged() {}

void IException::TraceFn::logData(IException& exception) {
    static const char kLocationFormat[] =
        "%s exception thrown.\n  function: %s\n  file: %s\n  line: %d";
    const char* className = exception.name();
    uint32_t locations = exception.locationCount();
    const IExceptionLocation* location =
        locations != 0 ? exception.locationAtIndex(locations - 1) : nullptr;
    const char* file =
        location != nullptr && location->fileName() != nullptr ? location->fileName() : "";
    const char* function = location != nullptr ? location->functionName() : "";
    int line = location != nullptr ? static_cast<int>(location->lineNumber()) : 0;
    uint32_t texts = exception.textCount();
    const char* group = exception.errorCodeGroup();

    std::size_t size = 200;
    if (location != nullptr)
        size = std::max(size, std::strlen(file) + std::strlen(function) + std::strlen(className) +
                                  std::strlen(kLocationFormat) + 9);
    for (uint32_t i = 0; i < texts; ++i) {
        const char* text = exception.text(i);
        size = std::max(size, (text != nullptr ? std::strlen(text) : 0) + 6);
    }
    auto* buffer = static_cast<char*>(qarq::os::calls().malloc(size + 1));
    if (buffer == nullptr) {
        // No room for the lines: straight to the stream write would use.
        FILE* out = stderr;
        if (location != nullptr)
            std::fprintf(out, "%s exception thrown.\n   function: %s\n   file: %s\n   line: %d.\n",
                         className, function, file, line);
        else
            std::fprintf(out, "\n%s exception thrown.\n   Location information is unavailable.\n",
                         className);
        if (exception.errorId() != 0)
            std::fprintf(out, "   Error ID is %d\n", static_cast<int>(exception.errorId()));
        else
            std::fprintf(out, "   Error ID is unavailable.\n");
        if (group != nullptr)
            std::fprintf(out, "   Error Code group is %s\n", group);
        else
            std::fprintf(out, "   Error Code group is unavailable.\n");
        if (texts != 0) {
            std::fprintf(out, "   Exception text is:\n");
            for (uint32_t i = texts; i-- > 0;) {
                const char* text = exception.text(i);
                std::fprintf(out, "      %s\n", text != nullptr ? text : "");
            }
        } else {
            std::fprintf(out, "   Exception text is unavailable.\n");
        }
        return;
    }
    if (location != nullptr)
        std::snprintf(buffer, size + 1, kLocationFormat, className, function, file, line);
    else
        std::snprintf(buffer, size + 1,
                      "\n%s exception thrown.\n   Location information is unavailable.", className);
    write(buffer);
    if (exception.errorId() != 0)
        std::snprintf(buffer, size + 1, "   Error Id is %d", static_cast<int>(exception.errorId()));
    else
        std::snprintf(buffer, size + 1, "   Error Id is unavailable.");
    write(buffer);
    if (group != nullptr)
        std::snprintf(buffer, size + 1, "   Error Code group is %s", group);
    else
        std::snprintf(buffer, size + 1, "   Error Code group is unavailable.");
    write(buffer);
    if (texts != 0) {
        write("   Exception text is:");
        for (uint32_t i = texts; i-- > 0;) {
            const char* text = exception.text(i);
            std::snprintf(buffer, size + 1, "      %s", text != nullptr ? text : "");
            write(buffer);
        }
    } else {
        write("   Exception text is unavailable.");
    }
    qarq::os::calls().free(buffer);
    exceptionLogged();
}
