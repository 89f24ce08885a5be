// Run while the program is built: turns the tables of character weights into a source file of constants.
//
//     sort_keys_generator sort_keys_jet3.csv sort_keys_jet4.csv sort_keys.cpp
//
// A table has a heading line and rows "codepoint,class,key,extra" with hexadecimal fields.
#include "data/jet/sort_keys.h"

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using jet::SortKey;
using jet::SortKeyTable;

template <std::size_t Size>
std::uint8_t readBytes(const std::string &digits, std::array<std::uint8_t, Size> &into)
{
    if (digits.size() % 2 != 0 || digits.size() / 2 > Size)
        throw std::runtime_error("bad byte sequence " + digits);
    for (std::size_t i = 0; i < digits.size() / 2; ++i)
        into[i] = static_cast<std::uint8_t>(std::stoul(digits.substr(2 * i, 2), nullptr, 16));
    return static_cast<std::uint8_t>(digits.size() / 2);
}

SortKey::Kind kindOf(const std::string &letter)
{
    static const std::map<std::string, SortKey::Kind> kinds{
        {"S", SortKey::Kind::Plain},    {"G", SortKey::Kind::CanAccent}, {"E", SortKey::Kind::TwoLetters},
        {"A", SortKey::Kind::Accented}, {"H", SortKey::Kind::Hyphen},    {"M", SortKey::Kind::Combining},
    };
    return kinds.at(letter);
}

std::map<std::size_t, SortKey> readTable(const std::string &path)
{
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line))
        throw std::runtime_error("cannot read " + path);
    std::map<std::size_t, SortKey> table;
    while (std::getline(file, line)) {
        std::istringstream fields(line);
        std::string codePoint, letter, key, extra;
        std::getline(fields, codePoint, ',');
        std::getline(fields, letter, ',');
        std::getline(fields, key, ',');
        std::getline(fields, extra, ',');
        SortKey entry;
        entry.kind = kindOf(letter);
        entry.keySize = readBytes(key, entry.key);
        entry.extraSize = readBytes(extra, entry.extra);
        table.emplace(std::stoul(codePoint, nullptr, 16), entry);
    }
    return table;
}

void writeKey(std::ostream &out, const SortKey &key)
{
    out << "    {SortKey::Kind{" << int{static_cast<std::uint8_t>(key.kind)} << "}, " << int{key.keySize}
        << ", {";
    for (const std::uint8_t byte : key.key)
        out << int{byte} << ',';
    out << "}, " << int{key.extraSize} << ", {" << int{key.extra[0]} << ',' << int{key.extra[1]} << "}},\n";
}

template <class T>
void writeNumbers(std::ostream &out, const std::string &type, const std::string &name,
                  const std::vector<T> &numbers)
{
    out << "constexpr " << type << ' ' << name << "[] = {";
    for (std::size_t i = 0; i < numbers.size(); ++i)
        out << (i % 24 == 0 ? "\n    " : "") << numbers[i] << ',';
    out << "\n};\n";
}

void writeTable(std::ostream &out, const std::string &name, const std::map<std::size_t, SortKey> &table)
{
    std::vector<std::size_t> places(0x10000);
    out << "constexpr SortKey k" << name << "Keys[] = {\n";
    writeKey(out, SortKey{});
    std::size_t count = 1;
    for (const auto &[codePoint, key] : table) {
        writeKey(out, key);
        places.at(codePoint) = count++;
    }
    out << "};\n";

    std::map<std::vector<std::size_t>, std::size_t> known;
    std::vector<std::size_t> blocks, distinct;
    for (std::size_t at = 0; at < places.size(); at += SortKeyTable::kBlockSize) {
        const auto first = places.begin() + static_cast<std::ptrdiff_t>(at);
        const std::vector<std::size_t> block(first, first + SortKeyTable::kBlockSize);
        const auto [found, fresh] = known.emplace(block, known.size());
        if (fresh)
            distinct.insert(distinct.end(), block.begin(), block.end());
        blocks.push_back(found->second);
    }
    if (known.size() > 256)
        throw std::runtime_error("too many blocks in table " + name);
    writeNumbers(out, "std::uint8_t", "k" + name + "Blocks", blocks);
    writeNumbers(out, "std::uint16_t", "k" + name + "Places", distinct);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        if (argc != 4)
            throw std::runtime_error("expected two tables and the file to write");
        std::ofstream out(argv[3]);
        out << "#include \"data/jet/sort_keys.h\"\n\nnamespace jet {\nnamespace {\n";
        writeTable(out, "Jet3", readTable(argv[1]));
        writeTable(out, "Jet4", readTable(argv[2]));
        out << "} // namespace\n\n";
        for (const std::string name : {"Jet3", "Jet4"})
            out << "const SortKeyTable kSortKeys" << name << "{k" << name << "Blocks, k" << name
                << "Places, k" << name << "Keys};\n";
        out << "} // namespace jet\n";
        out.close();
        if (!out)
            throw std::runtime_error("cannot write the tables");
    } catch (const std::exception &error) {
        std::cerr << "sort_keys_generator: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
