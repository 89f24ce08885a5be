// A disk in memory that stops or fails at a chosen operation, and what is found on it afterwards.
#pragma once

#include "common/errors.h"
#include "data/jet/file.h"
#include "tests/jet/memory_file.h"

#include <random>

/// When the disk fails. Operations are writes, cuts, syncs, and the making and removing of files.
struct DiskFault
{
    enum class Kind { None, Once, ForAWhile, ForGood };

    Kind kind = Kind::None;
    int at = 0;        ///< operations that still succeed
    bool torn = false; ///< of the failing write, every other sector arrives
    ErrorNumber error = ErrorNumber::DiskFull;
};

class CrashDisk : public jet::Folder
{
public:
    CrashDisk() = default;
    explicit CrashDisk(const std::map<std::string, FileBytes> &files)
    {
        for (const auto &[path, bytes] : files) {
            m_names[path] = std::make_shared<Content>(Content{bytes, bytes, {}});
            m_safeNames = m_names;
        }
    }

    DiskFault fault;

    /// Operations since the disk was made.
    [[nodiscard]] int operations() const { return m_operations; }
    [[nodiscard]] bool hasFailed() const { return m_failed; }

    /// The files as the next process finds them when this one was killed.
    [[nodiscard]] std::map<std::string, FileBytes> afterKill() const
    {
        std::map<std::string, FileBytes> files;
        for (const auto &[path, content] : m_names)
            files[path] = content->now;
        return files;
    }

    /// The files after a power cut: of what was not synced, any sectors and any names may have arrived.
    [[nodiscard]] std::map<std::string, FileBytes> afterPowerCut(unsigned seed) const
    {
        std::minstd_rand random(seed);
        const auto arrives = [&random] { return random() % 2 == 0; };
        std::map<std::string, FileBytes> files;
        for (const auto &[path, content] : arrives() ? m_names : m_safeNames) {
            FileBytes bytes = content->safe;
            for (const Change &change : content->unsynced)
                apply(bytes, change, arrives);
            files[path] = std::move(bytes);
        }
        return files;
    }

    [[nodiscard]] std::unique_ptr<jet::File> open(const std::string &path, jet::OpenMode mode) override
    {
        const auto found = m_names.find(path);
        if (found != m_names.end())
            return std::make_unique<DiskFile>(*this, found->second);
        if (mode == jet::OpenMode::ReadOnly || mode == jet::OpenMode::ReadWrite)
            throw FileError(ErrorNumber::FileNotFound, "There is no file " + path + ".");
        begin();
        return std::make_unique<DiskFile>(*this, m_names[path] = std::make_shared<Content>());
    }
    [[nodiscard]] bool exists(const std::string &path) const override { return m_names.contains(path); }
    void remove(const std::string &path) override
    {
        begin();
        m_names.erase(path);
    }
    void syncFolder(const std::string &) override
    {
        begin();
        m_safeNames = m_names;
    }

private:
    static constexpr std::size_t kSector = 512;
    static constexpr int kAWhile = 4; ///< operations that fail

    /// A write, or a cut when there are no bytes.
    struct Change
    {
        std::size_t at = 0;
        FileBytes bytes;
    };
    struct Content
    {
        FileBytes now;
        FileBytes safe;
        std::vector<Change> unsynced;
    };

    template <class Arrives>
    static void apply(FileBytes &bytes, const Change &change, Arrives arrives)
    {
        if (change.bytes.empty()) {
            if (arrives())
                bytes.resize(change.at);
            return;
        }
        for (std::size_t from = 0; from < change.bytes.size();) {
            const std::size_t to =
                std::min(change.bytes.size(), from + kSector - (change.at + from) % kSector);
            if (arrives()) {
                bytes.resize(std::max(bytes.size(), change.at + to));
                std::copy(change.bytes.begin() + static_cast<std::ptrdiff_t>(from),
                          change.bytes.begin() + static_cast<std::ptrdiff_t>(to),
                          bytes.begin() + static_cast<std::ptrdiff_t>(change.at + from));
            }
            from = to;
        }
    }

    class DiskFile : public jet::File
    {
    public:
        DiskFile(CrashDisk &disk, std::shared_ptr<Content> content)
            : m_disk(disk)
            , m_content(std::move(content))
        {}

        [[nodiscard]] std::uint64_t size() const override { return m_content->now.size(); }
        void read(std::uint64_t at, std::span<std::byte> into) const override
        {
            if (at + into.size() > m_content->now.size())
                throw FileError(ErrorNumber::PathAccess, "The file ends too early.");
            std::copy_n(m_content->now.begin() + static_cast<std::ptrdiff_t>(at), into.size(), into.begin());
        }
        void write(std::uint64_t at, std::span<const std::byte> bytes) override
        {
            const Change change{static_cast<std::size_t>(at), FileBytes(bytes.begin(), bytes.end())};
            if (m_disk.failsNow()) {
                bool other = false;
                if (m_disk.fault.torn)
                    apply(m_content->now, change, [&other] { return other = !other; });
                m_disk.fail();
            }
            m_content->unsynced.push_back(change);
            apply(m_content->now, change, [] { return true; });
        }
        void truncate(std::uint64_t size) override
        {
            m_disk.begin();
            m_content->unsynced.push_back({static_cast<std::size_t>(size), {}});
            m_content->now.resize(static_cast<std::size_t>(size));
        }
        void sync() override
        {
            m_disk.begin();
            m_content->safe = m_content->now;
            m_content->unsynced.clear();
        }
        [[nodiscard]] bool lock(std::uint64_t, std::uint64_t, jet::LockKind) override { return true; }

    private:
        CrashDisk &m_disk;
        std::shared_ptr<Content> m_content;
    };

    [[nodiscard]] bool failsNow()
    {
        const int place = m_operations++;
        return (fault.kind == DiskFault::Kind::Once && place == fault.at) ||
               (fault.kind == DiskFault::Kind::ForAWhile && place >= fault.at &&
                place < fault.at + kAWhile) ||
               (fault.kind == DiskFault::Kind::ForGood && place >= fault.at);
    }
    [[noreturn]] void fail()
    {
        m_failed = true;
        throw FileError(fault.error, "The disk is full.");
    }
    void begin()
    {
        if (failsNow())
            fail();
    }

    std::map<std::string, std::shared_ptr<Content>> m_names;
    std::map<std::string, std::shared_ptr<Content>> m_safeNames;
    int m_operations = 0;
    bool m_failed = false;
};
