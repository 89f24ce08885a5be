#include "output/libreoffice/workbook_file.h"

#include "common/errors.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace output {

namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr std::string_view kCompoundFile = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv;
constexpr std::string_view kZip = "PK\x03\x04"sv;
/// An OpenDocument file begins with an uncompressed entry of this name and content.
constexpr std::string_view kOpenDocument = "mimetypeapplication/vnd.oasis.opendocument.spreadsheet"sv;
constexpr std::size_t kEntryName = 30; ///< offset of the first entry's name in a zip file

std::string firstBytes(const std::string &file)
{
    std::error_code error;
    const auto status = fs::status(file, error);
    if (status.type() == fs::file_type::not_found)
        throw FileError(ErrorNumber::FileNotFound, "The file " + file + " does not exist.");
    const auto stop = [&](const std::string &reason) {
        throw FileError(ErrorNumber::PathAccess, "The file " + file + " cannot be opened: " + reason + ".");
    };
    // Asked before it is opened: a pipe would wait for somebody at its other end.
    if (fs::is_directory(status))
        stop("it is a folder");
    if (error)
        stop(error.message());
    if (!fs::is_regular_file(status))
        stop("it is no plain file");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        stop(std::strerror(errno));
    std::array<char, 128> bytes{};
    errno = 0;
    stream.read(bytes.data(), bytes.size());
    if (stream.bad())
        stop(std::strerror(errno)); // not taken for an empty file
    return {bytes.data(), static_cast<std::size_t>(stream.gcount())};
}

} // namespace

WorkbookKind workbookKind(const std::string &file)
{
    const std::string bytes = firstBytes(file);
    if (bytes.starts_with(kCompoundFile))
        return WorkbookKind::Excel97;
    if (bytes.starts_with(kZip)) {
        return std::string_view(bytes).substr(std::min(kEntryName, bytes.size())).starts_with(kOpenDocument)
                   ? WorkbookKind::OpenDocument
                   : WorkbookKind::Excel2007;
    }
    throw AppError(ErrorNumber::Workbook,
                   "The file " + file +
                       (bytes.empty() ? " is empty." : " is not a spreadsheet, whatever its name says."));
}

} // namespace output
