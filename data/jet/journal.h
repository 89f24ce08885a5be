// Journal: the file beside a database that holds the old and the new image of every page of one change.
//
// docs/decisions/0005-journal.md. It is on the disk before the first page is overwritten and void once the
// last one is on the disk too. Access files have no such thing, so whoever finds a complete journal under a
// lock knows that its owner died (or lost the disk) in the middle, and can finish the change.
//
// Layout, little-endian: a header of kHeaderSize bytes, then for each page its number (u32), whether an old
// image follows (u32, 1 or 0), the old image and the new image.
#pragma once

#include "data/jet/commit_marks.h"
#include "data/jet/page_change.h"

#include <optional>
#include <string>
#include <vector>

namespace jet {

/// What a journal says about its change besides the pages.
struct JournalHeader
{
    std::uint32_t pageSize = 0;
    std::uint64_t sizeBefore = 0; ///< bytes of the database file
    std::uint64_t sizeAfter = 0;
    std::uint16_t user = 0;      ///< number of the owner: its slot among the commit marks
    std::uint16_t markAfter = 0; ///< the owner's mark when the change is done; 0: the file is being made
    CommitWords words{};         ///< all marks before the change
    std::string workstation;     ///< of the owner; up to 31 bytes are kept
};

struct JournalContent
{
    JournalHeader header;
    std::vector<std::byte> images; ///< what the changes show
    std::vector<PageChange> changes;
};

class Journal
{
public:
    /// `path`: of the database, links followed.
    Journal(Folder &folder, const std::string &databasePath);

    [[nodiscard]] const std::string &path() const { return m_path; }

    /// Makes the images of a change durable. Throws FileError, and then there is no journal.
    void write(const JournalHeader &header, std::span<const PageChange> changes);
    /// Ends the journal's meaning: its change is done, or was taken back. The file stays for the next one.
    void invalidate();
    /// True when there may be a journal to settle(): cheap.
    [[nodiscard]] bool mayExist();
    /// The journal, when it is there and complete. Throws FileError when it is of another version of this
    /// program: nobody can tell what it has left to do.
    [[nodiscard]] std::optional<JournalContent> read();
    /// Removes the file, if any.
    void remove();

private:
    Folder &m_folder;
    std::string m_path;
};

/// How the pages of a journal stand in the file.
enum class Outcome : std::uint8_t {
    Old,     ///< nothing of the change is there
    New,     ///< all of it is
    Mixed,   ///< part of it is: the change can be finished
    Foreign, ///< something is neither old nor new: another program wrote since
};

/// Compares every page, sector by sector, with both images.
[[nodiscard]] Outcome compareWithFile(const JournalContent &journal, const File &file);

} // namespace jet
