#include "data/jet/lock_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <thread>

#include <unistd.h>

namespace jet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kUsers = 255;
constexpr std::size_t kEntry = 64;
constexpr std::size_t kName = 32; ///< of the workstation, and again of the account
constexpr char kAccount[] = "Admin";

/// Region of Access: byte kUserLocks + u belongs to user u as long as it has the database open.
constexpr std::uint64_t kUserLocks = 0x10000000;
/// An exclusive lock covers the users' bytes and goes on behind them by the number of its holder.
constexpr std::uint64_t kExclusive = 0x100;
/// Region of Access: a range for each page that is being written.
constexpr std::uint64_t kPageWrites = 0x20000000;
constexpr std::uint64_t kPageRegion = 0x10000000;
constexpr std::uint64_t kPageRange = 0x200;
/// More single ranges than these would keep the system busy; then the whole region is taken.
constexpr std::size_t kMostPageLocks = 1000;
/// Region of this program.
constexpr std::uint64_t kStatements = 0x7F000000;
/// One writer at a time gathers the users' bytes; two would keep half of them from each other.
constexpr std::uint64_t kQueue = kStatements + 0x300;

constexpr std::chrono::microseconds kShortestPause{300};
constexpr std::chrono::microseconds kLongestPause{1500};

/// Pauses of different lengths, so that users waiting for each other do not go on in step.
void pause()
{
    static std::minstd_rand random(std::random_device{}());
    std::uniform_int_distribution<std::int64_t> length(kShortestPause.count(), kLongestPause.count());
    std::this_thread::sleep_for(std::chrono::microseconds(length(random)));
}

[[nodiscard]] std::string machineName()
{
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0)
        return "unknown";
    return name.data();
}

} // namespace

std::string LockFile::pathFor(const std::string &databasePath)
{
    const std::size_t folder = databasePath.find_last_of('/');
    const std::size_t dot = databasePath.find_last_of('.');
    const bool hasExtension = dot != std::string::npos && (folder == std::string::npos || dot > folder + 1);
    return (hasExtension ? databasePath.substr(0, dot) : databasePath) + ".ldb";
}

LockFile::LockFile(Folder &folder, const std::string &databasePath, LockOptions options)
    : m_folder(folder)
    , m_path(pathFor(databasePath))
    , m_options(std::move(options))
{
    if (m_options.workstation.empty())
        m_options.workstation = machineName();
    const auto end = Clock::now() + m_options.wait;
    for (;;) {
        m_file = m_folder.open(m_path, OpenMode::OpenOrCreate);
        // The last user removes the file when it leaves: a lock on a removed one would be seen by nobody.
        const bool taken = takeNumber();
        if (taken && m_folder.isAt(m_path, *m_file))
            break;
        // A user that leaves holds all numbers for a moment.
        if (!taken && Clock::now() > end) {
            throw FileError(ErrorNumber::TableInUse,
                            "The database " + databasePath + " is open on 255 workstations already.");
        }
        pause();
    }
    writeEntry();
}

bool LockFile::takeNumber()
{
    for (m_user = 1; m_user <= kUsers; ++m_user) {
        if (set(kUserLocks + static_cast<std::uint64_t>(m_user), 1, LockKind::Exclusive))
            return true;
    }
    return false;
}

void LockFile::writeEntry()
{
    std::array<std::byte, kEntry> entry{};
    std::memcpy(entry.data(), m_options.workstation.data(),
                std::min(m_options.workstation.size(), kName - 1));
    std::memcpy(entry.data() + kName, kAccount, sizeof kAccount);
    m_file->write(static_cast<std::uint64_t>(m_user - 1) * kEntry, entry);
}

std::string LockFile::nameOf(int user) const
{
    std::array<std::byte, kName> name{};
    const std::uint64_t at = static_cast<std::uint64_t>(user - 1) * kEntry;
    const std::uint64_t size = m_file->size();
    m_file->read(at, std::span(name).first(std::min<std::size_t>(kName, size > at ? size - at : 0)));
    std::string text(reinterpret_cast<const char *>(name.data()), name.size());
    text.erase(std::min(text.find('\0'), text.size()));
    // Other programs fill up with blanks.
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

bool LockFile::set(std::uint64_t at, std::uint64_t count, LockKind kind)
{
    return m_file->lock(at, count, kind);
}

bool LockFile::isTaken(std::uint64_t byte)
{
    if (!set(byte, 1, LockKind::Shared))
        return true;
    static_cast<void>(set(byte, 1, LockKind::Unlock));
    return false;
}

bool LockFile::isPresent(int user)
{
    return user != m_user && isTaken(kUserLocks + static_cast<std::uint64_t>(user));
}

std::vector<std::string> LockFile::workstations()
{
    std::vector<std::string> names;
    for (int user = 1; user <= kUsers; ++user) {
        if (user == m_user || isPresent(user))
            names.push_back(nameOf(user));
    }
    return names;
}

void LockFile::hold(Hold wanted)
{
    if (wanted < m_held) {
        release(wanted);
        return;
    }
    if (wanted == m_held)
        return;
    waitFor([&] { return wanted == Hold::Reading ? tryReading() : tryWriting(); },
            [&] { return holderAt(kStatements); });
    m_held = wanted;
}

/// Tries until the time is up; `blamed` then says who was in the way.
template <class Attempt, class Blamed>
void LockFile::waitFor(Attempt attempt, Blamed blamed)
{
    if (attempt())
        return;
    const auto end = Clock::now() + m_options.wait;
    do {
        pause();
        if (attempt())
            return;
    } while (Clock::now() < end);
    if (m_held != Hold::Writing)
        release(m_held); // what was gathered so far
    throw inUse(blamed());
}

bool LockFile::tryReading()
{
    return set(kStatements + static_cast<std::uint64_t>(m_user), 1, LockKind::Exclusive);
}

/// All at once when nobody else is at work. Otherwise byte by byte as the readers leave them, which keeps the
/// same readers from coming back first.
bool LockFile::tryWriting()
{
    const std::uint64_t length = kExclusive + static_cast<std::uint64_t>(m_user);
    if (set(kStatements + 1, length, LockKind::Exclusive))
        return true;
    if (!tryQueue() || !gather(1, kUsers))
        return false;
    return set(kStatements + 1, length, LockKind::Exclusive);
}

bool LockFile::tryQueue()
{
    if (!m_queued)
        m_queued = set(kQueue, 1, LockKind::Exclusive);
    return m_queued;
}

/// Takes what is free of the bytes of some users; true when it has them all.
bool LockFile::gather(std::uint64_t first, std::uint64_t last)
{
    if (set(kStatements + first, last - first + 1, LockKind::Exclusive))
        return true;
    if (first == last)
        return false;
    const std::uint64_t middle = (first + last) / 2;
    const bool lower = gather(first, middle);
    return gather(middle + 1, last) && lower;
}

/// Lets go of everything but what `kept` needs.
void LockFile::release(Hold kept)
{
    const auto own = static_cast<std::uint64_t>(m_user);
    const auto unlock = [this](std::uint64_t first, std::uint64_t last) {
        if (first <= last)
            static_cast<void>(set(kStatements + first, last - first + 1, LockKind::Unlock));
    };
    if (kept == Hold::Nothing && m_held == Hold::Reading && !m_queued) {
        unlock(own, own);
    } else if (kept == Hold::Nothing) {
        unlock(1, kExclusive + own);
    } else {
        unlock(1, own - 1);
        unlock(own + 1, kExclusive + own);
    }
    if (std::exchange(m_queued, false))
        static_cast<void>(set(kQueue, 1, LockKind::Unlock));
    m_held = kept;
}

int LockFile::holderAt(std::uint64_t base)
{
    for (int user = kUsers; user > 0; --user) {
        if (isTaken(base + kExclusive + static_cast<std::uint64_t>(user)))
            return user;
    }
    for (int user = 1; user <= kUsers; ++user) {
        if (user != m_user && isTaken(base + static_cast<std::uint64_t>(user)))
            return user;
    }
    return 0;
}

void LockFile::lockPages(std::span<const PageNo> pages)
{
    if (pages.size() > kMostPageLocks) {
        waitFor([&] { return set(kPageWrites + 1, kPageRegion - 1, LockKind::Exclusive); }, [] { return 0; });
        return;
    }
    // All or nothing, so that two programs never keep half of what they need from each other.
    PageNo blocked{};
    waitFor(
        [&] {
            const auto found = std::ranges::find_if_not(pages, [this](PageNo page) { return tryPage(page); });
            if (found == pages.end())
                return true;
            blocked = *found;
            unlockPages();
            return false;
        },
        [&] { return holderAt(kPageWrites + number(blocked) * kPageRange); });
}

bool LockFile::tryPage(PageNo page)
{
    return set(kPageWrites + number(page) * kPageRange + 1, kExclusive + static_cast<std::uint64_t>(m_user),
               LockKind::Exclusive);
}

void LockFile::unlockPages()
{
    static_cast<void>(set(kPageWrites + 1, kPageRegion - 1, LockKind::Unlock));
}

FileError LockFile::inUse(int byUser) const
{
    const std::string name = byUser > 0 ? nameOf(byUser) : std::string();
    return {ErrorNumber::TableInUse, name.empty() ? "The table is in use on another workstation."
                                                  : "The table is in use on workstation " + name + "."};
}

bool LockFile::lockOutOthers()
{
    return set(kUserLocks + 1, kUsers, LockKind::Exclusive);
}

void LockFile::remove()
{
    m_folder.remove(m_path);
}

} // namespace jet
