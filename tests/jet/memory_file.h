// A file system in memory, and one that fails on demand.
#pragma once

#include "common/errors.h"
#include "data/jet/file.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

using FileBytes = std::vector<std::byte>;

/// Fails one write, sync or truncate, or that one and all behind it.
struct Faults
{
    enum class Kind { None, Once, ForGood };

    Kind kind = Kind::None;
    int letThrough = 0; ///< operations that still succeed
    bool tear = false;  ///< the failing write writes its first half
    int operations = 0; ///< counted so far

    /// True when the operation that begins now is to fail.
    bool hits()
    {
        const int place = operations++;
        return (kind == Kind::Once && place == letThrough) || (kind == Kind::ForGood && place >= letThrough);
    }
};

class MemoryFile : public jet::File
{
public:
    MemoryFile(std::shared_ptr<FileBytes> bytes, Faults &faults)
        : m_bytes(std::move(bytes))
        , m_faults(faults)
    {}

    [[nodiscard]] std::uint64_t size() const override { return m_bytes->size(); }

    void read(std::uint64_t at, std::span<std::byte> into) const override
    {
        if (at + into.size() > m_bytes->size())
            throw FileError(ErrorNumber::PathAccess, "The file ends too early.");
        std::copy_n(m_bytes->begin() + static_cast<std::ptrdiff_t>(at), into.size(), into.begin());
    }

    void write(std::uint64_t at, std::span<const std::byte> bytes) override
    {
        const bool fails = m_faults.hits();
        if (fails && !m_faults.tear)
            fail();
        if (fails)
            bytes = bytes.first(bytes.size() / 2);
        m_bytes->resize(std::max<std::size_t>(m_bytes->size(), static_cast<std::size_t>(at) + bytes.size()));
        std::ranges::copy(bytes, m_bytes->begin() + static_cast<std::ptrdiff_t>(at));
        if (fails)
            fail();
    }

    void truncate(std::uint64_t size) override
    {
        if (m_faults.hits())
            fail();
        m_bytes->resize(static_cast<std::size_t>(size));
    }

    void sync() override
    {
        if (m_faults.hits())
            fail();
    }

    [[nodiscard]] bool lock(std::uint64_t, std::uint64_t, jet::LockKind) override { return true; }

private:
    [[noreturn]] static void fail() { throw FileError(ErrorNumber::DiskFull, "The disk is full."); }

    std::shared_ptr<FileBytes> m_bytes;
    Faults &m_faults;
};

class MemoryFolder : public jet::Folder
{
public:
    [[nodiscard]] std::unique_ptr<jet::File> open(const std::string &path, jet::OpenMode mode) override
    {
        std::shared_ptr<FileBytes> &bytes = files[path];
        if (!bytes && (mode == jet::OpenMode::ReadOnly || mode == jet::OpenMode::ReadWrite)) {
            files.erase(path);
            throw FileError(ErrorNumber::FileNotFound, "There is no file " + path + ".");
        }
        if (!bytes)
            bytes = std::make_shared<FileBytes>();
        return std::make_unique<MemoryFile>(bytes, faults);
    }
    [[nodiscard]] bool exists(const std::string &path) const override { return files.contains(path); }
    void remove(const std::string &path) override { files.erase(path); }
    void syncFolder(const std::string &) override {}

    [[nodiscard]] FileBytes &bytes(const std::string &path) { return *files.at(path); }
    void put(const std::string &path, FileBytes bytes)
    {
        files[path] = std::make_shared<FileBytes>(std::move(bytes));
    }

    std::map<std::string, std::shared_ptr<FileBytes>> files;
    Faults faults;
};
