// A page before and after a change, and the writing of such pages.
#pragma once

#include "data/jet/file.h"
#include "data/jet/format.h"

namespace jet {

/// What a disk writes whole or not at all.
inline constexpr std::size_t kSector = 512;

struct PageChange
{
    PageNo page{};
    std::span<const std::byte> before; ///< empty for a page added to the file
    std::span<const std::byte> after;

    /// The part of an image that a change may write: the last sector of page 0 holds the commit marks of all
    /// users, and belongs to nobody's change. A new page 0 is written whole.
    [[nodiscard]] std::size_t ownBytes() const
    {
        return number(page) == 0 && !before.empty() ? after.size() - kSector : after.size();
    }
};

/// Writes the new images, in order.
void writePages(File &file, std::span<const PageChange> changes);
/// Puts the old images back and the file to its old size. Throws FileError when the file does not let it.
void takeBackPages(File &file, std::span<const PageChange> changes, std::uint64_t sizeBefore);

} // namespace jet
