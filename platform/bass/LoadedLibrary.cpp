#include "platform/bass/LoadedLibrary.h"

#include <dlfcn.h>

namespace bass {

LoadedLibrary::LoadedLibrary(const char* name)
    : m_library(dlopen(name, RTLD_NOW | RTLD_LOCAL)), m_complete(m_library != nullptr) {}

void* LoadedLibrary::address(const char* name) {
    void* found = m_library ? dlsym(m_library, name) : nullptr;
    m_complete = m_complete && found;
    return found;
}

} // namespace bass
