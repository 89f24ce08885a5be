// LockFile: the file beside a database through which its users know of each other.
//
// docs/jet-format.md, "Lock file". It holds no data but the users' names; its purpose is to carry byte-range
// locks far behind its end. A user takes the lowest free number from 1 to 255 when it opens the database and
// keeps a lock on the byte of that number until it leaves, so that the names of users that died are known
// from those of the living.
//
// Whole statements exclude each other by a lock of this program's own, in a region that Access does not use:
// a reader holds the byte of its number, a writer all of them. How far a writer's lock reaches behind them
// tells who it is. While pages are written they are locked in the way of Access too.
#pragma once

#include "common/errors.h"
#include "data/jet/file.h"
#include "data/jet/format.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace jet {

/// What a user of the file may count on until it lets go.
enum class Hold : std::uint8_t {
    Nothing,
    Reading, ///< no statement of another user changes the file meanwhile
    Writing, ///< no statement of another user reads or changes the file meanwhile
};

struct LockOptions
{
    /// How long to wait for other users before a statement fails.
    std::chrono::milliseconds wait{2000};
    /// Name under which other users see this one; "" takes the name of the machine.
    std::string workstation = {};
};

class LockFile
{
public:
    /// Enters the lock file of a database, made when there is none. Throws FileError: PathAccess when the
    /// folder takes no new file, TableInUse when all 255 numbers are taken.
    LockFile(Folder &folder, const std::string &databasePath, LockOptions options);
    /// Leaves it. The file stays: leaveAlone() removes it.
    ~LockFile() = default;
    LockFile(const LockFile &) = delete;
    LockFile &operator=(const LockFile &) = delete;

    /// Where the lock file of a database stands.
    [[nodiscard]] static std::string pathFor(const std::string &databasePath);

    /// Number of this user, 1 to 255.
    [[nodiscard]] int user() const { return m_user; }
    [[nodiscard]] Hold held() const { return m_held; }

    /// Changes what is held. Raising waits for others up to the limit, then throws FileError(TableInUse) that
    /// names the workstation in the way; what was held before is held still.
    void hold(Hold wanted);

    /// Locks pages as other programs do while they write them; needs Hold::Writing. Throws
    /// FileError(TableInUse).
    void lockPages(std::span<const PageNo> pages);
    void unlockPages();

    /// True when somebody else has the number: the entry of that user is no left-over.
    [[nodiscard]] bool isPresent(int user);
    /// Names of the workstations that have the database open, this one included, by user number.
    [[nodiscard]] std::vector<std::string> workstations();
    /// Name in the entry of a user; "" when there is none.
    [[nodiscard]] std::string nameOf(int user) const;
    /// The error of a statement that a user kept from running until the time was up.
    [[nodiscard]] FileError inUse(int byUser) const;
    [[nodiscard]] std::chrono::milliseconds waitLimit() const { return m_options.wait; }

    /// True when nobody else has the database open, and nobody can enter until this object is gone.
    [[nodiscard]] bool lockOutOthers();
    /// Removes the lock file; only after lockOutOthers().
    void remove();

private:
    [[nodiscard]] bool takeNumber();
    void writeEntry();
    template <class Attempt, class Blamed>
    void waitFor(Attempt attempt, Blamed blamed);
    [[nodiscard]] bool tryReading();
    [[nodiscard]] bool tryWriting();
    [[nodiscard]] bool tryQueue();
    [[nodiscard]] bool gather(std::uint64_t first, std::uint64_t last);
    void release(Hold kept);
    [[nodiscard]] bool tryPage(PageNo page);
    /// The user that holds a lock beginning at a base; 0 when it is gone by now.
    [[nodiscard]] int holderAt(std::uint64_t base);
    [[nodiscard]] bool isTaken(std::uint64_t byte);
    [[nodiscard]] bool set(std::uint64_t at, std::uint64_t count, LockKind kind);

    Folder &m_folder;
    std::string m_path;
    LockOptions m_options;
    std::unique_ptr<File> m_file;
    int m_user = 0;
    Hold m_held = Hold::Nothing;
    bool m_queued = false; ///< first in the queue of those that wait to write
};

} // namespace jet
