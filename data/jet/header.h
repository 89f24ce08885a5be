// The file header, page 0: which version a file is, its code page, sort order and password.
//
// docs/jet-format.md, "Header page".
#pragma once

#include "data/jet/file.h"
#include "data/jet/format.h"

#include <string>
#include <vector>

namespace jet {

struct FileHeader
{
    Version version = Version::Jet3;
    std::uint16_t countryCode = 0;
    std::uint16_t codePage = 1252;
    std::uint16_t sortOrder = 0x0409;
    std::uint8_t sortOrderVersion = 0;
    std::uint32_t encodingKey = 0;   ///< not 0: the other pages are encoded
    double created = 0;              ///< Jet 4: date serial; also masks the password
    std::vector<std::byte> password; ///< stored characters up to the first zero; empty when none is set

    [[nodiscard]] const Format &format() const { return version == Version::Jet3 ? kJet3 : kJet4; }
};

/// Reads page 0. Throws CorruptFile, naming `path`, for anything that is no Jet 3 or Jet 4 database.
[[nodiscard]] FileHeader readHeader(const File &file, const std::string &path);

/// The whole page 0 of a new file.
[[nodiscard]] std::vector<std::byte> makeHeaderPage(const FileHeader &header);

/// The stored form of a password. Throws AppError(PasswordWrong) when it is longer than a file can hold.
[[nodiscard]] std::vector<std::byte> passwordBytes(const FileHeader &header, const std::string &password);
/// Throws AppError(PasswordWrong) unless the password opens the file; a file without one opens with any.
void checkPassword(const FileHeader &header, const std::string &password, const std::string &path);

} // namespace jet
