// SharedFile: one open database file among the other users of it, and the way in which changes reach it.
//
// docs/decisions/0005-journal.md and 0006-sharing.md. A statement runs under a hold. Taking one tells whether
// somebody else changed the file since the last one, by the commit marks in its header, and finishes what a
// user that died left half done. commit() is all or nothing, also when this process or the machine stops
// anywhere inside it.
#pragma once

#include "data/jet/journal.h"
#include "data/jet/lock_file.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace jet {

/// How far a commit must go before it returns.
enum class Durability : std::uint8_t {
    Durable, ///< journalled and synced
    Lazy,    ///< all or nothing for this process, but the disk is not waited for: scratch tables
};

class SharedFile
{
public:
    enum class Access : std::uint8_t { ReadOnly, ReadWrite };

    /// Enters the lock file beside the database. A file opened for reading makes none, but minds one that is
    /// there. Throws as LockFile does.
    SharedFile(File &file, Folder &folder, const std::string &path, const LockOptions &options,
               Access access);
    /// Leaves; the last user takes lock file and journal away.
    ~SharedFile();
    SharedFile(const SharedFile &) = delete;
    SharedFile &operator=(const SharedFile &) = delete;

    /// Finishes what a dead user left, before anything of the file is read. Throws CorruptFile when another
    /// program changed the file since.
    void settleAtOpening();
    /// From here on the file has a header with commit marks, in pages of this size.
    void setPageSize(std::size_t pageSize) { m_pageSize = pageSize; }
    /// Removes the journal of a file just made, since it has no marks that could tell it is done.
    void removeJournal() { m_journal.remove(); }

    /// Changes what is held; true when everything read from the file before may be out of date. Throws
    /// FileError(TableInUse) when another user is in the way for too long, AppError(TableReadOnly) when the
    /// file may not be written; what was held before is held still.
    [[nodiscard]] bool hold(Hold wanted);

    /// Brings a change to the file; needs Hold::Writing. Throws FileError, and then the file is as before.
    void commit(std::span<const PageChange> changes, std::uint64_t sizeBefore, std::uint64_t sizeAfter,
                Durability durability);

    /// Why nothing may be written to the file, as far as its commit marks tell, or "".
    [[nodiscard]] const std::string &suspicion() const { return m_suspicion; }
    /// Names of the workstations that have the file open.
    [[nodiscard]] std::vector<std::string> workstations();

private:
    void joinOthers();
    void holdLock(Hold wanted);
    [[nodiscard]] bool refresh();
    [[nodiscard]] CommitWords words() const { return readCommitWords(m_file, m_pageSize); }
    [[nodiscard]] CommitWords waitForWriters(CommitWords marks);
    [[nodiscard]] std::string suspicionOf(const CommitWords &marks) const;
    [[nodiscard]] bool settle();
    [[nodiscard]] bool isVoid(const JournalHeader &journal, Outcome outcome) const;
    [[nodiscard]] bool carryOut(const JournalContent &journal);
    void takeBack(std::span<const PageChange> changes, std::uint64_t sizeBefore, bool durable,
                  std::uint16_t mark);
    [[nodiscard]] std::size_t slot() const { return m_lock ? static_cast<std::size_t>(m_lock->user()) : 0; }

    File &m_file;
    Folder &m_folder;
    std::string m_path; ///< links followed
    LockOptions m_options;
    Access m_access;
    std::unique_ptr<LockFile> m_lock;
    Journal m_journal;
    std::size_t m_pageSize = 0; ///< 0: the file has no header yet
    Hold m_held = Hold::Nothing;
    /// Marks of the state that was read last.
    std::optional<CommitWords> m_known;
    std::string m_suspicion;
    bool m_halfDone = false; ///< a change failed and could not be taken back: its journal has to be settled
};

} // namespace jet
