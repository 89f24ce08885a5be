// A file system in memory.
#pragma once

#include "common/errors.h"
#include "data/jet/file.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

using FileBytes = std::vector<std::byte>;

class MemoryFile : public jet::File
{
public:
    explicit MemoryFile(std::shared_ptr<FileBytes> bytes)
        : m_bytes(std::move(bytes))
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
        m_bytes->resize(std::max<std::size_t>(m_bytes->size(), static_cast<std::size_t>(at) + bytes.size()));
        std::ranges::copy(bytes, m_bytes->begin() + static_cast<std::ptrdiff_t>(at));
    }

    void truncate(std::uint64_t size) override { m_bytes->resize(static_cast<std::size_t>(size)); }
    void sync() override {}
    [[nodiscard]] bool lock(std::uint64_t, std::uint64_t, jet::LockKind) override { return true; }

private:
    std::shared_ptr<FileBytes> m_bytes;
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
        return std::make_unique<MemoryFile>(bytes);
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
};
