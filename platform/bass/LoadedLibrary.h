#pragma once

namespace bass {

/// A shared library that is loaded when it is needed, so that the first window does not wait for it. It stays
/// loaded for as long as the process runs.
///
/// Threads: any, one at a time.
class LoadedLibrary {
public:
    /// By its soname.
    explicit LoadedLibrary(const char* name);

    /// Whether it is there, with every call that was looked for.
    [[nodiscard]] bool isComplete() const { return m_complete; }
    /// Null when it is not there.
    template <typename Call> void find(const char* name, Call& call) {
        call = reinterpret_cast<Call>(address(name));
    }

private:
    void* address(const char* name);

    void* m_library;
    bool m_complete;
};

} // namespace bass
