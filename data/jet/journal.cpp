#include "data/jet/journal.h"

#include "common/errors.h"
#include "data/jet/page.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace jet {
namespace {

constexpr char kMagic[] = "PAGEJRN";
constexpr std::uint32_t kVersion = 1;

// Header
constexpr std::size_t kHeaderSize = 1024;
constexpr std::size_t kHeaderCheck = 8; ///< over the header with this field zero
constexpr std::size_t kBodyCheck = 16;  ///< over all that follows the header
constexpr std::size_t kFormatVersion = 24;
constexpr std::size_t kPageSize = 28;
constexpr std::size_t kPages = 32;
constexpr std::size_t kUser = 36;
constexpr std::size_t kMarkAfter = 38;
constexpr std::size_t kSizeBefore = 40;
constexpr std::size_t kSizeAfter = 48;
constexpr std::size_t kBodySize = 56; ///< the file may go on behind it, from a longer journal before
constexpr std::size_t kWorkstation = 64;
constexpr std::size_t kWorkstationSize = 32;
constexpr std::size_t kWords = 512;

constexpr std::size_t kEntryHead = 8;

/// Between changes a journal may keep this much of the disk.
constexpr std::uint64_t kKeptSize = std::uint64_t{4} << 20;

/// A sum over bytes that notices what a disk that lost power leaves: old sectors, zeros, a cut end.
[[nodiscard]] std::uint64_t checksum(std::span<const std::byte> bytes)
{
    constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;
    std::uint64_t sum = bytes.size();
    while (!bytes.empty()) {
        std::uint64_t word = 0;
        const std::size_t count = std::min(bytes.size(), sizeof word);
        std::memcpy(&word, bytes.data(), count);
        sum = std::rotl((sum ^ word) * kFactor, 29);
        bytes = bytes.subspan(count);
    }
    return sum;
}

void putU64(const PageEditor &into, std::size_t at, std::uint64_t value)
{
    into.putU32(at, static_cast<std::uint32_t>(value));
    into.putU32(at + 4, static_cast<std::uint32_t>(value >> 32));
}

[[nodiscard]] std::uint64_t u64(const PageView &from, std::size_t at)
{
    return from.u32(at) | std::uint64_t{from.u32(at + 4)} << 32;
}

[[nodiscard]] std::size_t bodySize(std::span<const PageChange> changes)
{
    std::size_t size = 0;
    for (const PageChange &change : changes)
        size += kEntryHead + change.before.size() + change.after.size();
    return size;
}

/// Header and body as one piece of bytes.
[[nodiscard]] std::vector<std::byte> encode(const JournalHeader &header, std::span<const PageChange> changes)
{
    std::vector<std::byte> bytes(kHeaderSize + bodySize(changes));
    const PageEditor editor(PageNo{0}, bytes);
    std::size_t at = kHeaderSize;
    const auto put = [&](std::span<const std::byte> image) {
        std::ranges::copy(image, bytes.begin() + static_cast<std::ptrdiff_t>(at));
        at += image.size();
    };
    for (const PageChange &change : changes) {
        editor.putU32(at, number(change.page));
        editor.putU32(at + 4, change.before.empty() ? 0 : 1);
        at += kEntryHead;
        put(change.before);
        put(change.after);
    }

    std::memcpy(bytes.data(), kMagic, sizeof kMagic);
    editor.putU32(kFormatVersion, kVersion);
    editor.putU32(kPageSize, header.pageSize);
    editor.putU32(kPages, static_cast<std::uint32_t>(changes.size()));
    editor.putU16(kUser, header.user);
    editor.putU16(kMarkAfter, header.markAfter);
    putU64(editor, kSizeBefore, header.sizeBefore);
    putU64(editor, kSizeAfter, header.sizeAfter);
    putU64(editor, kBodySize, bytes.size() - kHeaderSize);
    std::memcpy(bytes.data() + kWorkstation, header.workstation.data(),
                std::min(header.workstation.size(), kWorkstationSize - 1));
    for (std::size_t user = 0; user < kCommitWords; ++user)
        editor.putU16(kWords + 2 * user, header.words[user]);
    putU64(editor, kBodyCheck, checksum(std::span(bytes).subspan(kHeaderSize)));
    putU64(editor, kHeaderCheck, checksum(std::span(bytes).first(kHeaderSize)));
    return bytes;
}

/// True for a whole header, of whatever version: all have their name and their sum at the same place.
[[nodiscard]] bool isHeader(std::span<std::byte> bytes)
{
    if (std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0)
        return false;
    const PageEditor editor(PageNo{0}, bytes);
    const std::uint64_t sum = u64(editor.view(), kHeaderCheck);
    putU64(editor, kHeaderCheck, 0);
    return checksum(bytes) == sum;
}

/// A whole header of this version; nothing when it says what cannot be.
[[nodiscard]] std::optional<JournalHeader> decodeHeader(std::span<const std::byte> bytes)
{
    const PageView view(PageNo{0}, bytes);
    JournalHeader header;
    header.pageSize = view.u32(kPageSize);
    header.user = view.u16(kUser);
    header.markAfter = view.u16(kMarkAfter);
    header.sizeBefore = u64(view, kSizeBefore);
    header.sizeAfter = u64(view, kSizeAfter);
    for (std::size_t user = 0; user < kCommitWords; ++user)
        header.words[user] = view.u16(kWords + 2 * user);
    const auto name = view.slice(kWorkstation, kWorkstationSize);
    header.workstation.assign(reinterpret_cast<const char *>(name.data()), name.size());
    header.workstation.erase(std::min(header.workstation.find('\0'), header.workstation.size()));
    if ((header.pageSize != kJet3.pageSize && header.pageSize != kJet4.pageSize) ||
        header.user >= kCommitWords)
        return {};
    return header;
}

/// Finds the pages of a body; false when they do not fill it exactly.
[[nodiscard]] bool decodeBody(JournalContent &journal, std::uint32_t pages)
{
    const std::span<const std::byte> bytes(journal.images);
    const PageView view(PageNo{0}, bytes);
    const std::size_t pageSize = journal.header.pageSize;
    std::size_t at = 0;
    for (std::uint32_t i = 0; i < pages; ++i) {
        if (bytes.size() - at < kEntryHead)
            return false;
        const PageNo page{view.u32(at)};
        const bool hasOld = view.u32(at + 4) != 0;
        at += kEntryHead;
        if (bytes.size() - at < (hasOld ? 2 : 1) * pageSize)
            return false;
        const auto before = bytes.subspan(at, hasOld ? pageSize : 0);
        at += before.size();
        journal.changes.push_back({page, before, bytes.subspan(at, pageSize)});
        at += pageSize;
    }
    return at == bytes.size();
}

} // namespace

Journal::Journal(Folder &folder, const std::string &databasePath)
    : m_folder(folder)
    , m_path(databasePath + ".journal")
{}

void Journal::write(const JournalHeader &header, std::span<const PageChange> changes)
{
    const std::vector<std::byte> bytes = encode(header, changes);
    const std::unique_ptr<File> file = m_folder.open(m_path, OpenMode::OpenOrCreate);
    try {
        const bool fresh = file->size() == 0;
        file->write(0, bytes);
        file->sync();
        if (fresh)
            m_folder.syncFolder(m_path);
    } catch (...) {
        // Nothing was changed yet: a journal that stayed would carry out a change that was refused.
        attempt([&] { file->truncate(0); });
        throw;
    }
}

void Journal::invalidate()
{
    // The file is kept and its header overwritten: making, removing or cutting a file costs the disk more
    // than all the rest. Not synced: compareWithFile() and the marks tell a done change from an open one.
    const std::unique_ptr<File> file = m_folder.open(m_path, OpenMode::ReadWrite);
    if (file->size() > kKeptSize) {
        file->truncate(0);
    } else if (file->size() > 0) {
        file->write(0, std::vector<std::byte>(kHeaderSize));
    }
}

bool Journal::mayExist()
{
    return m_folder.exists(m_path);
}

std::optional<JournalContent> Journal::read()
{
    if (!mayExist())
        return {};
    const std::unique_ptr<File> file = m_folder.open(m_path, OpenMode::ReadOnly);
    const std::uint64_t size = file->size();
    if (size < kHeaderSize)
        return {};
    std::vector<std::byte> head(kHeaderSize);
    file->read(0, head);
    if (!isHeader(head))
        return {};
    const PageView view(PageNo{0}, head);
    if (view.u32(kFormatVersion) != kVersion) {
        throw FileError(ErrorNumber::PathAccess,
                        "The journal " + m_path +
                            " is of another version of this program. Open the database once with that one, "
                            "so that it finishes its last change.");
    }
    const auto header = decodeHeader(head);
    if (!header)
        return {};
    const std::uint64_t bodySize = u64(view, kBodySize);
    if (bodySize > size - kHeaderSize)
        return {};
    JournalContent journal{*header, std::vector<std::byte>(static_cast<std::size_t>(bodySize)), {}};
    file->read(kHeaderSize, journal.images);
    if (checksum(journal.images) != u64(view, kBodyCheck) || !decodeBody(journal, view.u32(kPages)))
        return {};
    return journal;
}

void Journal::remove()
{
    if (mayExist())
        m_folder.remove(m_path);
}

namespace {

/// What has been seen of a change in the file so far.
struct Traces
{
    bool ofOld = false;
    bool ofNew = false;
    bool ofOthers = false;

    /// A sector, or less at the end of the file, beside its two images.
    void take(std::span<const std::byte> found, std::span<const std::byte> before,
              std::span<const std::byte> after)
    {
        if (std::ranges::equal(before, after)) {
            ofOthers = ofOthers || !std::ranges::equal(found, after);
        } else if (std::ranges::equal(found, after)) {
            ofNew = true;
        } else if (std::ranges::equal(found, before)) {
            ofOld = true;
        } else {
            ofOthers = true;
        }
    }
};

} // namespace

Outcome compareWithFile(const JournalContent &journal, const File &file)
{
    const std::uint64_t size = file.size();
    if (size < journal.header.sizeBefore ||
        size > std::max(journal.header.sizeBefore, journal.header.sizeAfter))
        return Outcome::Foreign;
    Traces traces;
    traces.ofOld = size < journal.header.sizeAfter;
    // A file that grows shows zeros until its new pages are there.
    const std::vector<std::byte> zeros(journal.header.pageSize);
    std::vector<std::byte> found(journal.header.pageSize);
    for (const PageChange &change : journal.changes) {
        const std::uint64_t at = std::uint64_t{number(change.page)} * found.size();
        const std::span<const std::byte> before = change.before.empty() ? std::span(zeros) : change.before;
        const std::uint64_t there = std::min<std::uint64_t>(change.ownBytes(), size > at ? size - at : 0);
        if (there > 0)
            file.read(at, std::span(found).first(static_cast<std::size_t>(there)));
        for (std::size_t sector = 0; sector < there; sector += kSector) {
            const std::size_t length =
                std::min<std::size_t>(kSector, static_cast<std::size_t>(there) - sector);
            traces.take(std::span(found).subspan(sector, length), before.subspan(sector, length),
                        change.after.subspan(sector, length));
        }
    }
    if (traces.ofOthers)
        return Outcome::Foreign;
    if (!traces.ofOld)
        return Outcome::New;
    return traces.ofNew ? Outcome::Mixed : Outcome::Old;
}

} // namespace jet
