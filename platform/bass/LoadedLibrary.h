#pragma once

namespace bass {

/// A shared library that is loaded on first use, so that it does not delay the first window. It is never
/// unloaded.
///
/// Threads: one at a time.
class LoadedLibrary {
public:
    /// Loads a library by its soname.
    explicit LoadedLibrary(const char* name);

    /// True when the library and all symbols looked up so far were found.
    [[nodiscard]] bool isComplete() const { return m_complete; }
    /// Looks up a symbol; `call` is null when it was not found.
    template <typename Call> void find(const char* name, Call& call) {
        call = reinterpret_cast<Call>(address(name));
    }

private:
    void* address(const char* name);

    void* m_library;
    bool m_complete;
};

} // namespace bass
