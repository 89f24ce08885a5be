#include "data/jet/page_change.h"

namespace jet {
namespace {

void writeImage(File &file, const PageChange &change, std::span<const std::byte> image)
{
    file.write(std::uint64_t{number(change.page)} * image.size(), image.first(change.ownBytes()));
}

} // namespace

void writePages(File &file, std::span<const PageChange> changes)
{
    for (const PageChange &change : changes)
        writeImage(file, change, change.after);
}

void takeBackPages(File &file, std::span<const PageChange> changes, std::uint64_t sizeBefore)
{
    for (const PageChange &change : changes) {
        if (!change.before.empty())
            writeImage(file, change, change.before);
    }
    if (file.size() > sizeBefore)
        file.truncate(sizeBefore);
}

} // namespace jet
