#pragma once

#include <unistd.h>

#include <utility>

namespace bass {

/// Owns a file descriptor; -1 is none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this == &other) return *this;
        reset();
        m_descriptor = other.release();
        return *this;
    }

    int get() const { return m_descriptor; }
    int release() { return std::exchange(m_descriptor, -1); }
    void reset() {
        if (m_descriptor >= 0) close(m_descriptor);
        m_descriptor = -1;
    }
    explicit operator bool() const { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};

} // namespace bass
