#pragma once

#include "platform/bass/source/ByteSource.h"

#include <memory>
#include <string>

namespace bass {

/// A regular file. Its name is always a path, never parsed as an address.
class FileIo final : public ByteSource {
public:
    struct Opened {
        std::unique_ptr<FileIo> file; ///< null on failure
        Failure failure = Failure::none;
    };

    /// Fails for anything but a readable regular file; never blocks on a FIFO or a device.
    [[nodiscard]] static Opened open(const std::string& path, std::shared_ptr<Cancel> cancel);
    ~FileIo() override;
    FileIo(const FileIo&) = delete;
    FileIo& operator=(const FileIo&) = delete;

    [[nodiscard]] int read(std::span<std::uint8_t> out) override;
    [[nodiscard]] std::int64_t seek(std::int64_t offset) override;
    [[nodiscard]] std::int64_t size() const override { return m_size; }
    [[nodiscard]] bool seekable() const override { return true; }
    [[nodiscard]] bool seeksFast() const override { return true; }
    [[nodiscard]] Failure failure() const override { return m_failure; }

private:
    FileIo(int descriptor, std::int64_t size, std::shared_ptr<Cancel> cancel)
        : ByteSource(std::move(cancel)), m_descriptor(descriptor), m_size(size) {}

    int m_descriptor;
    std::int64_t m_size;
    Failure m_failure = Failure::none;
};

} // namespace bass
