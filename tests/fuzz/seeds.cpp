// Writes files of both versions, made by the engine itself, into a folder of seeds: some with structures of
// every kind, and some so small that a run takes little time.
#include "tests/jet/sound_file.h"

#include <fstream>
#include <iostream>

namespace {

/// One table with an index and a few rows.
FileBytes smallFile(jet::Version version)
{
    using jet::ColumnType;
    MemoryFolder folder;
    const auto database = jet::Database::create("small.mdb", {.version = version}, folder);
    jet::Table &table =
        database->createTable({.name = "T",
                               .columns = {{.name = "Id", .type = ColumnType::Long, .autonumber = true},
                                           {.name = "Name", .type = ColumnType::Text, .size = 20},
                                           {.name = "Note", .type = ColumnType::Memo}},
                               .indexes = {{.name = "Name", .keys = {{"Name"}}}}});
    for (std::size_t i = 0; i < 8; ++i)
        table.insert(std::vector<Value>{Null{}, std::string(i, 'n'), std::string(50 * i, 'm')});
    return folder.bytes("small.mdb");
}

void write(const std::string &path, const FileBytes &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::cerr << "Usage: fuzz_seeds FOLDER\n";
        return 2;
    }
    const std::string folder = std::string(argv[1]) + '/';
    try {
        write(folder + "made3.mdb", support::SoundFile(jet::Version::Jet3).bytes);
        write(folder + "made4.mdb", support::SoundFile(jet::Version::Jet4).bytes);
        write(folder + "small3.mdb", smallFile(jet::Version::Jet3));
        write(folder + "small4.mdb", smallFile(jet::Version::Jet4));
    } catch (const std::exception &error) {
        std::cerr << "fuzz_seeds: " << error.what() << '\n';
        return 2;
    }
    return 0;
}
