// Commit marks: one number for each possible user at the end of page 0, by which users of a file see that
// somebody changed it, or stopped while doing so.
//
// docs/jet-format.md, "Commit marks". A user counts its own mark on with each change. User 0 is one that has
// the file for itself.
#pragma once

#include "data/jet/file.h"

#include <array>

namespace jet {

inline constexpr std::size_t kCommitWords = 256;
/// The marks by user number.
using CommitWords = std::array<std::uint16_t, kCommitWords>;

namespace commit_mark {
inline constexpr std::uint16_t kWriting = 0x0000;
inline constexpr std::uint16_t kMetDamage = 0x0001;
inline constexpr std::uint16_t kFirst = 0x0100; ///< of a user that never wrote

/// The mark after one more change. Neither of the two marks with a meaning comes up again.
[[nodiscard]] constexpr std::uint16_t after(std::uint16_t mark)
{
    return mark == 0xFFFF ? kFirst : static_cast<std::uint16_t>(mark + 1);
}
} // namespace commit_mark

[[nodiscard]] CommitWords readCommitWords(const File &file, std::size_t pageSize);
void writeCommitMark(File &file, std::size_t pageSize, std::size_t user, std::uint16_t mark);

} // namespace jet
