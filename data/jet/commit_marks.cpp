#include "data/jet/commit_marks.h"

#include "data/jet/page.h"

namespace jet {
namespace {

constexpr std::size_t kBytes = 2 * kCommitWords; ///< to the end of page 0

} // namespace

CommitWords readCommitWords(const File &file, std::size_t pageSize)
{
    std::array<std::byte, kBytes> bytes{};
    file.read(pageSize - kBytes, bytes);
    const PageView view(PageNo{0}, bytes);
    CommitWords words{};
    for (std::size_t user = 0; user < kCommitWords; ++user)
        words[user] = view.u16(2 * user);
    return words;
}

void writeCommitMark(File &file, std::size_t pageSize, std::size_t user, std::uint16_t mark)
{
    std::array<std::byte, 2> bytes{};
    PageEditor(PageNo{0}, bytes).putU16(0, mark);
    file.write(pageSize - kBytes + 2 * user, bytes);
}

} // namespace jet
