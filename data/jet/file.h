// Files and folders as the storage engine sees them.
//
// Every byte the engine reads or writes passes through File; every file it finds, makes or removes through
// Folder. Tests put a file in memory and one that fails at will in their place. Each operation does all that
// it was asked or throws FileError; there are no short reads or writes for callers to forget.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace jet {

enum class LockKind : std::uint8_t { Shared, Exclusive, Unlock };

class File
{
public:
    virtual ~File() = default;
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    virtual void read(std::uint64_t at, std::span<std::byte> into) const = 0;
    virtual void write(std::uint64_t at, std::span<const std::byte> bytes) = 0;
    virtual void truncate(std::uint64_t size) = 0;
    /// Returns when everything written so far would survive a power cut.
    virtual void sync() = 0;
    /// Takes or releases a byte-range lock without waiting; false when somebody else holds it. Ranges may lie
    /// past the end of the file.
    [[nodiscard]] virtual bool lock(std::uint64_t at, std::uint64_t count, LockKind kind) = 0;
};

enum class OpenMode : std::uint8_t { ReadOnly, ReadWrite, Create /*must not exist*/, OpenOrCreate };

class Folder
{
public:
    virtual ~Folder() = default;
    [[nodiscard]] virtual std::unique_ptr<File> open(const std::string &path, OpenMode mode) = 0;
    [[nodiscard]] virtual bool exists(const std::string &path) const = 0;
    virtual void remove(const std::string &path) = 0;
    /// Makes the creation or removal of files in the folder of `path` durable.
    virtual void syncFolder(const std::string &path) = 0;
    /// The path with all links followed, so that files made beside it are found by whoever came another way.
    [[nodiscard]] virtual std::string resolved(const std::string &path) const { return path; }
    /// True when an opened file is still the one that the path names.
    [[nodiscard]] virtual bool isAt(const std::string &, const File &) const { return true; }
};

/// The local file system. Open-file-description locks, so that closing another descriptor never drops a lock.
Folder &posixFolder();

} // namespace jet
