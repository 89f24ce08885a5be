// The local file system behind File and Folder.

#include "common/errors.h"
#include "data/jet/file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace jet {
namespace {

[[nodiscard]] ErrorNumber numberOf(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return ErrorNumber::FileNotFound;
    case ENOSPC:
    case EDQUOT:
        return ErrorNumber::DiskFull;
    case EEXIST:
        return ErrorNumber::ObjectExists;
    case EFBIG:
        return ErrorNumber::FileTooLarge;
    default:
        return ErrorNumber::PathAccess;
    }
}

[[noreturn]] void fail(const std::string &path, const char *action, int error)
{
    throw FileError(numberOf(error),
                    "The file " + path + " could not be " + action + ": " + std::strerror(error) + ".");
}

[[nodiscard]] std::string folderOf(const std::string &path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? std::string(".") : folder;
}

/// Calls a system function again while a signal interrupts it.
template <class Call>
auto retried(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

class PosixFile : public File
{
public:
    PosixFile(std::string path, int descriptor)
        : m_path(std::move(path))
        , m_descriptor(descriptor)
    {}
    PosixFile(const PosixFile &) = delete;
    PosixFile &operator=(const PosixFile &) = delete;
    ~PosixFile() override { ::close(m_descriptor); }

    [[nodiscard]] std::uint64_t size() const override
    {
        struct stat status = {};
        if (::fstat(m_descriptor, &status) != 0)
            fail(m_path, "read", errno);
        return static_cast<std::uint64_t>(status.st_size);
    }

    void read(std::uint64_t at, std::span<std::byte> into) const override
    {
        while (!into.empty()) {
            const ssize_t count = retried(
                [&] { return ::pread(m_descriptor, into.data(), into.size(), static_cast<off_t>(at)); });
            if (count < 0)
                fail(m_path, "read", errno);
            if (count == 0) {
                throw FileError(ErrorNumber::PathAccess, "The file " + m_path +
                                                             " ends too early: nothing at byte " +
                                                             std::to_string(at) + ".");
            }
            into = into.subspan(static_cast<std::size_t>(count));
            at += static_cast<std::uint64_t>(count);
        }
    }

    void write(std::uint64_t at, std::span<const std::byte> bytes) override
    {
        while (!bytes.empty()) {
            const ssize_t count = retried(
                [&] { return ::pwrite(m_descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at)); });
            if (count < 0)
                fail(m_path, "written", errno);
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            at += static_cast<std::uint64_t>(count);
        }
    }

    void truncate(std::uint64_t size) override
    {
        if (retried([&] { return ::ftruncate(m_descriptor, static_cast<off_t>(size)); }) != 0)
            fail(m_path, "shortened", errno);
    }

    void sync() override
    {
        // Not retried on failure: after a failed sync the kernel may have dropped the pages it could not
        // write.
        if (::fdatasync(m_descriptor) != 0)
            fail(m_path, "made safe on the disk", errno);
    }

    [[nodiscard]] bool lock(std::uint64_t at, std::uint64_t count, LockKind kind) override
    {
        struct flock range = {};
        range.l_type = static_cast<short>(kind == LockKind::Shared      ? F_RDLCK
                                          : kind == LockKind::Exclusive ? F_WRLCK
                                                                        : F_UNLCK);
        range.l_whence = SEEK_SET;
        range.l_start = static_cast<off_t>(at);
        range.l_len = static_cast<off_t>(count);
        if (retried([&] { return ::fcntl(m_descriptor, F_OFD_SETLK, &range); }) == 0)
            return true;
        if (errno == EAGAIN || errno == EACCES)
            return false;
        fail(m_path, "locked", errno);
    }

    [[nodiscard]] bool isAt(const std::string &path) const
    {
        struct stat opened = {};
        struct stat named = {};
        return ::fstat(m_descriptor, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
               opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
    }

private:
    std::string m_path;
    int m_descriptor;
};

class PosixFolder : public Folder
{
public:
    [[nodiscard]] std::unique_ptr<File> open(const std::string &path, OpenMode mode) override
    {
        int flags = O_CLOEXEC;
        switch (mode) {
        case OpenMode::ReadOnly:
            flags |= O_RDONLY;
            break;
        case OpenMode::ReadWrite:
            flags |= O_RDWR;
            break;
        case OpenMode::Create:
            flags |= O_RDWR | O_CREAT | O_EXCL;
            break;
        case OpenMode::OpenOrCreate:
            flags |= O_RDWR | O_CREAT;
            break;
        }
        const int descriptor = retried([&] { return ::open(path.c_str(), flags, 0666); });
        if (descriptor < 0)
            fail(path, mode == OpenMode::Create ? "made" : "opened", errno);
        struct stat status = {};
        if (::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode)) {
            ::close(descriptor);
            fail(path, "opened", EISDIR);
        }
        return std::make_unique<PosixFile>(path, descriptor);
    }

    [[nodiscard]] bool exists(const std::string &path) const override
    {
        return ::access(path.c_str(), F_OK) == 0;
    }

    void remove(const std::string &path) override
    {
        if (::unlink(path.c_str()) != 0)
            fail(path, "removed", errno);
    }

    void syncFolder(const std::string &path) override
    {
        const std::string folder = folderOf(path);
        const int descriptor =
            retried([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
        if (descriptor < 0)
            fail(folder, "opened", errno);
        const int result = ::fsync(descriptor);
        const int error = errno;
        ::close(descriptor);
        // Some network file systems cannot sync a folder and say so; the files in it are still safe.
        if (result != 0 && error != EINVAL && error != ENOTSUP)
            fail(folder, "made safe on the disk", error);
    }

    [[nodiscard]] std::string resolved(const std::string &path) const override
    {
        std::error_code error;
        const std::filesystem::path found =
            std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
        return error ? path : found.string();
    }

    [[nodiscard]] bool isAt(const std::string &path, const File &file) const override
    {
        const auto *opened = dynamic_cast<const PosixFile *>(&file);
        return opened != nullptr && opened->isAt(path);
    }
};

} // namespace

Folder &posixFolder()
{
    static PosixFolder folder;
    return folder;
}

} // namespace jet
