#include "data/jet/shared_file.h"

#include "common/errors.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace jet {
namespace {

constexpr std::chrono::milliseconds kLookAgain{2};

/// Keeps other programs, which know nothing of this program's own locks, from the pages of a change.
class PageLocks
{
public:
    PageLocks(LockFile *locks, std::span<const PageChange> changes)
        : m_locks(locks)
    {
        if (m_locks == nullptr)
            return;
        std::vector<PageNo> pages;
        pages.reserve(changes.size());
        for (const PageChange &change : changes)
            pages.push_back(change.page);
        std::ranges::sort(pages);
        m_locks->lockPages(pages);
    }
    PageLocks(const PageLocks &) = delete;
    PageLocks &operator=(const PageLocks &) = delete;
    ~PageLocks()
    {
        if (m_locks != nullptr)
            attempt([this] { m_locks->unlockPages(); });
    }

private:
    LockFile *m_locks;
};

} // namespace

SharedFile::SharedFile(File &file, Folder &folder, const std::string &path, const LockOptions &options,
                       Access access)
    : m_file(file)
    , m_folder(folder)
    , m_path(folder.resolved(path))
    , m_options(options)
    , m_access(access)
    , m_journal(folder, m_path)
{
    if (access == Access::ReadWrite) {
        m_lock = std::make_unique<LockFile>(m_folder, m_path, m_options);
    } else {
        joinOthers();
    }
}

SharedFile::~SharedFile()
{
    // A suspect file keeps its lock file, as other programs do it.
    attempt([this] {
        if (!m_lock || !m_suspicion.empty() || !m_lock->lockOutOthers())
            return;
        if (!m_journal.read())
            m_journal.remove();
        m_lock->remove();
    });
}

/// A file that is only read may lie where nothing can be made, and needs no lock as long as nobody else is
/// there.
void SharedFile::joinOthers()
{
    if (m_lock || m_access != Access::ReadOnly || !m_folder.exists(LockFile::pathFor(m_path)))
        return;
    attempt([this] { m_lock = std::make_unique<LockFile>(m_folder, m_path, m_options); });
}

void SharedFile::holdLock(Hold wanted)
{
    if (m_lock)
        m_lock->hold(m_access == Access::ReadOnly ? std::min(wanted, Hold::Reading) : wanted);
}

std::vector<std::string> SharedFile::workstations()
{
    return m_lock ? m_lock->workstations() : std::vector<std::string>();
}

bool SharedFile::hold(Hold wanted)
{
    if (wanted <= m_held) {
        holdLock(wanted);
        m_held = wanted;
        return false;
    }
    joinOthers();
    holdLock(wanted);
    const Hold before = std::exchange(m_held, wanted);
    try {
        return refresh();
    } catch (...) {
        m_held = before;
        holdLock(before);
        throw;
    }
}

bool SharedFile::refresh()
{
    if (m_pageSize == 0)
        return false;
    CommitWords marks = words();
    bool stale = m_known != marks;
    // While no writer can be at work, a mark that says so is of one that died. Who is going to write looks
    // for a journal in any case: its owner may have died before it set the mark.
    const bool halted = stale && std::ranges::count(marks, commit_mark::kWriting) > 0;
    if (m_held == Hold::Writing || halted || m_halfDone) {
        if (settle()) {
            marks = words();
            stale = true;
        }
        m_halfDone = false;
    }
    if (stale) {
        marks = waitForWriters(marks);
        m_suspicion = suspicionOf(marks);
        m_known = marks;
    }
    if (m_held == Hold::Writing && !m_suspicion.empty())
        throw AppError(ErrorNumber::TableReadOnly, m_suspicion);
    return stale;
}

/// Other programs write under locks of their own. Their marks tell when they are at it.
CommitWords SharedFile::waitForWriters(CommitWords marks)
{
    const auto end = std::chrono::steady_clock::now() + m_options.wait;
    for (std::size_t user = 1; m_lock && user < kCommitWords; ++user) {
        while (marks[user] == commit_mark::kWriting && m_lock->isPresent(static_cast<int>(user))) {
            if (std::chrono::steady_clock::now() > end)
                throw m_lock->inUse(static_cast<int>(user));
            std::this_thread::sleep_for(kLookAgain);
            marks = words();
        }
    }
    return marks;
}

std::string SharedFile::suspicionOf(const CommitWords &marks) const
{
    const bool damaged = std::ranges::count(marks, commit_mark::kMetDamage) > 0;
    if (!damaged && std::ranges::count(marks, commit_mark::kWriting) == 0)
        return {};
    return "Nothing may be written to the database file " + m_path + ": a workstation " +
           (damaged ? "met a damaged page in it" : "stopped in the middle of a change to it") +
           ". Have it repaired with Access, or restore it from a copy.";
}

void SharedFile::settleAtOpening()
{
    if (!m_journal.mayExist())
        return;
    holdLock(Hold::Reading);
    try {
        static_cast<void>(settle());
    } catch (...) {
        holdLock(Hold::Nothing);
        throw;
    }
    holdLock(Hold::Nothing);
}

/// Finishes the change of a journal, if there is one whose change is not done. True when the file was
/// changed.
///
/// Needs a lock: whoever wrote the journal is not at work while it is held, so it died, or it could neither
/// finish its change nor take it back.
bool SharedFile::settle()
{
    auto journal = m_journal.read();
    if (!journal)
        return false;
    if (m_access == Access::ReadOnly || !m_lock) {
        if (compareWithFile(*journal, m_file) == Outcome::Mixed) {
            throw FileError(ErrorNumber::PathAccess,
                            "A change of the database file " + m_path +
                                " was not finished. Open it once where it can be written.");
        }
        return false;
    }
    // Given back first: two readers that both keep theirs would wait for each other.
    const Hold before = m_lock->held();
    if (before != Hold::Writing) {
        m_lock->hold(Hold::Nothing);
        m_lock->hold(Hold::Writing);
        journal = m_journal.read();
    }
    const bool finished = journal && carryOut(*journal);
    if (journal)
        m_journal.invalidate();
    m_lock->hold(before);
    return finished;
}

/// Writes the new images of a journal unless its change is done. True when the file was changed.
bool SharedFile::carryOut(const JournalContent &journal)
{
    const JournalHeader &header = journal.header;
    const Outcome outcome = compareWithFile(journal, m_file);
    if (isVoid(header, outcome))
        return false;
    if (outcome == Outcome::Foreign) {
        throw CorruptFile("The database file " + m_path +
                          " was changed by another program after the workstation " + header.workstation +
                          " stopped in the middle of a change to it. Nothing was altered. Restore the file "
                          "from a copy, or have it checked and then delete " +
                          m_journal.path() + ".");
    }
    const bool marked = header.markAfter != 0;
    if (marked)
        writeCommitMark(m_file, header.pageSize, header.user, commit_mark::kWriting);
    writePages(m_file, journal.changes);
    if (marked)
        writeCommitMark(m_file, header.pageSize, header.user, header.markAfter);
    m_file.sync();
    return true;
}

/// True when the marks tell that the change of a journal was completed and others came after it, or that it
/// was never begun and is out of date. Either leaves a journal behind when the machine stops before the disk
/// has learnt that it has no meaning any more.
bool SharedFile::isVoid(const JournalHeader &journal, Outcome outcome) const
{
    if (journal.markAfter == 0 || m_file.size() < journal.pageSize)
        return false;
    CommitWords marks = readCommitWords(m_file, journal.pageSize);
    const std::uint16_t own = std::exchange(marks[journal.user], journal.words[journal.user]);
    const bool othersWrote = marks != journal.words;
    if (own == journal.markAfter)
        return othersWrote;
    if (own == journal.words[journal.user])
        return othersWrote && outcome == Outcome::Old;
    return own != commit_mark::kWriting;
}

void SharedFile::commit(std::span<const PageChange> changes, std::uint64_t sizeBefore,
                        std::uint64_t sizeAfter, Durability durability)
{
    const bool durable = durability == Durability::Durable;
    if (m_halfDone) {
        throw FileError(ErrorNumber::PathAccess, "The last change of the database file " + m_path +
                                                     " could be neither finished nor taken back.");
    }
    const bool marked = m_known.has_value(); // a file that is being made has no marks yet
    const PageLocks pages(durable ? m_lock.get() : nullptr, changes);
    if (marked && durable && words() != *m_known) {
        throw FileError(ErrorNumber::TableInUse,
                        "Another program changed the database file " + m_path + " meanwhile. Try again.");
    }
    const std::size_t user = slot();
    const std::uint16_t before = marked ? m_known->at(user) : std::uint16_t{0};
    const std::uint16_t after = marked ? commit_mark::after(before) : std::uint16_t{0};
    if (durable) {
        m_journal.write({static_cast<std::uint32_t>(changes.front().after.size()), sizeBefore, sizeAfter,
                         static_cast<std::uint16_t>(user), after, m_known.value_or(CommitWords{}),
                         m_lock ? m_lock->nameOf(m_lock->user()) : std::string()},
                        changes);
    }
    try {
        // Without a journal nobody could finish the change, so nobody is told that it began.
        if (durable && marked)
            writeCommitMark(m_file, m_pageSize, user, commit_mark::kWriting);
        writePages(m_file, changes);
        if (marked)
            writeCommitMark(m_file, m_pageSize, user, after);
        if (durable)
            m_file.sync();
    } catch (...) {
        takeBack(changes, sizeBefore, durable, before);
        throw;
    }
    if (marked)
        m_known->at(user) = after;
    // A journal that stays is seen to be done.
    if (durable)
        attempt([this] { m_journal.invalidate(); });
}

/// After a failed write: puts everything back as far as the file lets us. A full disk takes the old images,
/// since their pages exist already.
void SharedFile::takeBack(std::span<const PageChange> changes, std::uint64_t sizeBefore, bool durable,
                          std::uint16_t mark)
{
    const bool done = attempt([&] {
        takeBackPages(m_file, changes, sizeBefore);
        if (m_known)
            writeCommitMark(m_file, m_pageSize, slot(), mark);
        if (durable) {
            m_file.sync();
            m_journal.invalidate();
        }
    });
    if (!done) {
        m_halfDone = durable;
        m_known.reset();
    }
}

} // namespace jet
