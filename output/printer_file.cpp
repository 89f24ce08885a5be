#include "output/printer_file.h"

#include "common/errors.h"
#include "common/format.h"
#include "data/paths.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace output {

namespace {

/// Characters of the bytes 0x80 to 0x9F. The five bytes without a character of their own stand for the
/// control character of the same number, as they do in the databases.
constexpr std::array<char32_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char byteOf(char32_t character)
{
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
        return static_cast<char>(character);
    const auto found = std::find(kHighControls.begin(), kHighControls.end(), character);
    return found == kHighControls.end() ? '?' : static_cast<char>(0x80 + (found - kHighControls.begin()));
}

/// The code point of one UTF-8 sequence. What is no such sequence gives a character that no printer has.
char32_t decoded(std::string_view sequence)
{
    const auto byte = [sequence](std::size_t at) { return static_cast<std::uint8_t>(sequence[at]); };
    if (byte(0) < 0x80)
        return byte(0);
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : byte(0) >= 0xC0 ? 2 : 0;
    if (length == 0 || length != sequence.size())
        return 0xFFFD;
    char32_t character = byte(0) & (0x7FU >> length);
    for (std::size_t at = 1; at < length; ++at)
        character = (character << 6) | (byte(at) & 0x3FU);
    return character;
}

} // namespace

void PrinterFile::open(const std::string &path)
{
    close();
    m_path = path;
    // Asked first: a path of another system would otherwise become a file of that odd name in the current
    // folder.
    if (!data::folderReachable(path.substr(0, path.find_last_of("\\/") + 1))) {
        throw FileError(ErrorNumber::PathAccess,
                        "The folder for the print file " + path + " cannot be reached.");
    }
    std::error_code missing;
    std::filesystem::remove(data::localPath(path), missing);
    m_stream.open(data::localPath(path), std::ios::binary | std::ios::trunc);
    requireGood();
}

void PrinterFile::write(std::string_view bytes)
{
    if (!isOpen())
        throw FileError(ErrorNumber::PathAccess, "The print file is not open.");
    m_stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    requireGood();
}

void PrinterFile::close()
{
    if (!isOpen())
        return;
    m_stream.close();
    requireGood();
}

void PrinterFile::requireGood()
{
    if (m_stream.good())
        return;
    m_stream = std::ofstream();
    throw FileError(ErrorNumber::PathAccess, "The print file " + m_path + " cannot be written.");
}

std::string printerBytes(std::string_view text)
{
    std::string bytes;
    while (!text.empty()) {
        const std::string_view character = firstCharacters(text, 1);
        bytes += byteOf(decoded(character));
        text.remove_prefix(character.size());
    }
    return bytes;
}

} // namespace output
