#include "qarq/ras/HeskFile.hpp"

#include <cerrno>

// Placeholder until roll-over lands.
extern "C" {
int HeskOpenRetry(const char*, long, FILE** file) {
    if (file != nullptr) *file = nullptr;
    return ENOSYS;
}
int HeskFileClose(FILE* file) { return file != nullptr && std::fclose(file) != 0 ? errno : 0; }
}
