#include "qarq/vorn/vornnls1.hpp"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "vorn/VornNlsState.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;
namespace nls = qarq::vorn::nls;

namespace {

constexpr unsigned kNameBuffer = 128;
constexpr const char* kKeep = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

char upperAscii(char c) { return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c; }
bool space(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// The codeset and language of a locale name "ll_TT.codeset@modifier",
// lower-cased, with '-' and '_' dropped from the codeset.
void splitLocale(const char* locale, char* language, size_t languageSize, char* codeset,
                 size_t codesetSize) {
    size_t l = 0, c = 0;
    const char* p = locale;
    while (*p != '\0' && *p != '_' && *p != '.' && *p != '@') {
        if (l + 1 < languageSize) language[l++] = char(std::tolower((unsigned char)*p));
        ++p;
    }
    while (*p != '\0' && *p != '.' && *p != '@') ++p;
    if (*p == '.') {
        for (++p; *p != '\0' && *p != '@'; ++p) {
            if (*p == '-' || *p == '_') continue;
            if (c + 1 < codesetSize) codeset[c++] = char(std::tolower((unsigned char)*p));
        }
    }
    language[l] = '\0';
    codeset[c] = '\0';
}

bool in(const char* word, std::initializer_list<const char*> set) {
    for (const char* s : set)
        if (std::strcmp(word, s) == 0) return true;
    return false;
}

// The Windows ANSI code page that the process locale stands for.
const char* ansiCodePage() {
    const qarq::os::Calls& os = qarq::os::calls();
    const char* locale = nullptr;
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = os.getenv(variable);
        if (value != nullptr && *value != '\0') {
            locale = value;
            break;
        }
    }
    if (locale == nullptr || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0)
        return "1252";
    char language[16], codeset[32];
    splitLocale(locale, language, sizeof language, codeset, sizeof codeset);
    if (in(codeset, {"utf8"})) return "65001";
    if (in(codeset, {"sjis", "shiftjis", "cp932", "windows31j", "mskanji"})) return "932";
    if (in(codeset, {"gbk", "gb2312", "euccn", "cp936", "gb18030"})) return "936";
    if (in(codeset, {"euckr", "uhc", "cp949"})) return "949";
    if (in(codeset, {"big5", "big5hkscs", "cp950", "euctw"})) return "950";
    if (in(language, {"ja"})) return "932";
    if (in(language, {"ko"})) return "949";
    if (in(language, {"zh"})) {
        // Traditional script for Taiwan and Hong Kong, simplified elsewhere.
        return (std::strstr(locale, "_TW") != nullptr || std::strstr(locale, "_HK") != nullptr)
                   ? "950"
                   : "936";
    }
    if (in(language, {"cs", "sk", "pl", "hu", "sl", "hr", "ro", "sq", "bs"})) return "1250";
    if (in(language, {"ru", "uk", "be", "bg", "mk", "sr", "kk", "ky", "tg", "mn"})) return "1251";
    if (in(language, {"el"})) return "1253";
    if (in(language, {"tr", "az"})) return "1254";
    if (in(language, {"he", "yi", "iw"})) return "1255";
    if (in(language, {"ar", "fa", "ur"})) return "1256";
    if (in(language, {"lt", "lv", "et"})) return "1257";
    if (in(language, {"vi"})) return "1258";
    if (in(language, {"th"})) return "874";
    return "1252";
}

FILE* openAliases() {
    const qarq::os::Calls& os = qarq::os::calls();
    FILE* file = nullptr;
    const char* bindir = os.getenv("BINDIR");
    if (bindir != nullptr && *bindir != '\0' && std::strlen(bindir) + 34 < 255) {
        char path[256];
        std::snprintf(path, sizeof path, "%s%cGRV%cserver%ccodeset%caliases", bindir, '/', '/',
                      '/', '/');
        file = os.fopen(path, "r");
    }
    if (file == nullptr) file = os.fopen("aliases", "r");
    return file;
}

}  // namespace

extern "C" {

unsigned vornnls1_get_lang(void) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_get_lang");
    const qarq::os::Calls& os = qarq::os::calls();
    const char* value = os.getenv("LANG");
    const bool missing = value == nullptr || *value == '\0';
    if (missing) value = "C";
    size_t length = std::strlen(value);
    auto* copy = static_cast<char*>(os.malloc(length + 1));
    if (copy == nullptr) return 0;
    for (size_t i = 0; i <= length; ++i) copy[i] = upperAscii(value[i]);
    if (missing && ::setenv("LANG", "C", 1) != 0) std::fputs("VORNNLS1:  putenv rc 1\n", stdout);
    nls::setLang(copy);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "vornnls1_get_lang",
                     pair(nls::lang()));
    return 0;
}

unsigned vornnls1_get_cs_name(char* name, unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_get_cs_name",
                     pair(length));
    if (length == 0 || name == nullptr) return 1;
    name[0] = '\0';
    // Like the locale query it replaces, a buffer too small for the whole
    // number gets nothing.
    const char* page = ansiCodePage();
    if (std::strlen(page) < length) std::strcpy(name, page);
    if (std::atoi(name) == 0) name[0] = '\0';
    name[length - 1] = '\0';
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "vornnls1_get_cs_name",
                     pair(name));
    return 0;
}

unsigned vornnls1_get_alias(char* name, unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_get_alias",
                     pair(name));
    FILE* file = openAliases();
    if (file == nullptr) return 1;
    if (name != nullptr && length > 0) {
        char line[kNameBuffer];
        while (std::fgets(line, sizeof line, file) != nullptr) {
            if (line[0] == '#') continue;
            char* p = line;
            while (*p != '\0' && space(*p)) ++p;
            char* first = p;
            while (*p != '\0' && !space(*p)) ++p;
            char* firstEnd = p;
            while (*p != '\0' && space(*p)) ++p;
            char* second = p;
            while (*p != '\0' && !space(*p)) ++p;
            // The second column counts only with white space behind it (the
            // line's own newline does): a last line cut by the end of the
            // file, or by the line limit, is no alias.
            if (*p == '\0') continue;
            *firstEnd = '\0';
            if (std::strcmp(first, name) != 0) continue;
            *p = '\0';
            std::strncpy(name, second, length);
            name[length - 1] = '\0';
            break;
        }
    }
    qarq::os::calls().fclose(file);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "vornnls1_get_alias",
                     pair(name));
    return 0;
}

unsigned vornnls1_get_table_name(const char* source, char* name, unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_get_table_name",
                     pair(source));
    if (name == nullptr || length == 0) return 0;
    if (source == nullptr) source = "";
    const char* p = source;
    if (std::strncmp(p, "ZTH", 3) == 0) p += 3;
    unsigned kept = 0;
    for (; *p != '\0' && kept < length - 1; ++p) {
        char c = upperAscii(*p);
        if (c != '\0' && std::strchr(kKeep, c) != nullptr) name[kept++] = c;
    }
    name[kept] = '\0';
    if (kept == 0) qarq::ras::logError("vornnls1_get_table_name", __LINE__, 0, 0, {pair(source)});
    vornnls1_get_alias(name, length);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "vornnls1_get_table_name",
                     pair(name));
    return 0;
}

unsigned vornnls1_tis_os_cs_name(char* name, int length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_tis_os_cs_name");
    vornnls1_get_lang();
    char page[kNameBuffer];
    vornnls1_get_cs_name(page, sizeof page);
    vornnls1_get_table_name(page, name, length > 0 ? unsigned(length) : 0u);
    return 0;
}

unsigned vornnls1_tis_init(void) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls1_tis_init");
    if (nls::tisInitialised()) return 0;
    char name[kNameBuffer] = {};
    vornnls1_tis_os_cs_name(name, sizeof name);
    VornNlsCodeSet* cs = vornnls6_tis_cs_new(name);
    if (cs == nullptr) cs = vornnls6_tis_cs_new("DEFAULT");
    if (cs != nullptr) vornnls6_tis_set_def_cs(cs, 1);
    VornNlsCodeSet* alternate = vornnls6_tis_def_2_cs_new();
    if (alternate != nullptr) vornnls6_tis_set_def_cs(alternate, 2);
    nls::tisInitialised() = true;
    // The tables now belong to the default records; only the records go.
    if (cs != nullptr) qarq::os::calls().free(cs);
    if (alternate != nullptr) qarq::os::calls().free(alternate);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "vornnls1_tis_init",
                     pair(name));
    return 0;
}

}  // extern "C"
