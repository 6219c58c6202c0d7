// An outside program using the installed package.
#include <qarq/qarq.hpp>

#include <cstdio>
#include <cstring>

int main() {
    const char* text = HeskMessageText("qarz.dll", 4001);
    if (text == nullptr || std::strstr(text, "%1") == nullptr) {
        std::fprintf(stderr, "catalogue text missing\n");
        return 1;
    }
    std::printf("qarq %s found; message 4001: %s\n", QARQ_VERSION_STRING, text);
    return 0;
}
