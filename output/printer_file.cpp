#include "output/printer_file.h"

#include "common/encoding.h"
#include "common/errors.h"
#include "data/paths.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

namespace output {

namespace {

char byteOf(char32_t character)
{
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
        return static_cast<char>(character);
    const auto found = std::find(kWindows1252.begin(), kWindows1252.end(), character);
    return found == kWindows1252.end() ? '?' : static_cast<char>(0x80 + (found - kWindows1252.begin()));
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
    for (std::size_t at = 0; at < text.size();)
        bytes += byteOf(nextUtf8(text, at));
    return bytes;
}

std::string printedText(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<std::uint8_t>(byte);
        const bool high = number >= 0x80 && number < 0xA0;
        appendUtf8(text, high ? kWindows1252[number - 0x80U] : number);
    }
    return text;
}

} // namespace output
