#pragma once

#include <unistd.h>

/// Owns an open file; -1 is none.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }

private:
    int m_fd;
};
