#include "data/jet/header.h"

#include "common/errors.h"
#include "data/jet/page.h"
#include "data/jet/text_codec.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numeric>

namespace jet {
namespace {

constexpr std::size_t kSignature = 4;
constexpr char kSignatureText[] = "Standard Jet DB";
constexpr std::size_t kVersion = 0x14;

constexpr std::size_t kMasked = 0x18; ///< from here 126 (Jet 3) or 128 bytes are masked
constexpr std::size_t kFirstPointers = 0x18;
constexpr std::size_t kCountryCode = 0x38;
constexpr std::size_t kSortOrderJet3 = 0x3A;
constexpr std::size_t kCodePage = 0x3C;
constexpr std::size_t kEncodingKey = 0x3E;
constexpr std::size_t kPassword = 0x42;
constexpr std::size_t kBuildJet3 = 0x56;
constexpr std::size_t kBuildJet4 = 0x6A;
constexpr std::size_t kSortOrderJet4 = 0x6E;
constexpr std::size_t kSortVersionJet4 = 0x71;
constexpr std::size_t kCreatedJet4 = 0x72;
constexpr std::size_t kTrailerJet4 = 0x98;

constexpr std::uint16_t kIdleCounter = 0x0100;

[[nodiscard]] std::size_t maskedSize(Version version)
{
    return version == Version::Jet3 ? 126 : 128;
}
[[nodiscard]] std::size_t passwordSize(Version version)
{
    return version == Version::Jet3 ? 20 : 40;
}

/// The constant stream over the masked bytes: RC4 with a fixed key. Masking twice gives the plain bytes back.
void mask(std::span<std::byte> page, Version version)
{
    constexpr std::array<std::uint8_t, 4> kKey{0xC7, 0xDA, 0x39, 0x6B};
    std::array<std::uint8_t, 256> state{};
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    for (std::size_t i = 0, j = 0; i < 256; ++i) {
        j = (j + state[i] + kKey[i % kKey.size()]) & 0xFF;
        std::swap(state[i], state[j]);
    }
    std::size_t i = 0;
    std::size_t j = 0;
    for (std::byte &byte : page.subspan(kMasked, maskedSize(version))) {
        i = (i + 1) & 0xFF;
        j = (j + state[i]) & 0xFF;
        std::swap(state[i], state[j]);
        byte ^= std::byte{state[(state[i] + state[j]) & 0xFF]};
    }
}

/// Jet 4 masks the password once more, with the day on which the file was made.
void maskPassword(std::span<std::byte> password, double created)
{
    const double day = std::trunc(created);
    const std::int32_t key = day > -2.0e9 && day < 2.0e9 ? static_cast<std::int32_t>(day) : 0;
    for (std::size_t i = 0; i < password.size(); ++i)
        password[i] ^= static_cast<std::byte>(static_cast<std::uint32_t>(key) >> (i % 4 * 8) & 0xFF);
}

/// The characters up to the first zero one.
[[nodiscard]] std::vector<std::byte> upToZero(std::span<const std::byte> stored, std::size_t unit)
{
    std::size_t size = 0;
    const auto isZero = [](std::byte byte) { return byte == std::byte{0}; };
    while (size < stored.size() && !std::ranges::all_of(stored.subspan(size, unit), isZero))
        size += unit;
    return {stored.begin(), stored.begin() + static_cast<std::ptrdiff_t>(size)};
}

[[nodiscard]] CorruptFile notAccess(const std::string &path, const std::string &reason)
{
    return CorruptFile("The file " + path +
                       " is not an Access 97 or Access 2000-2003 database (page 0): " + reason + ".");
}

} // namespace

FileHeader readHeader(const File &file, const std::string &path)
{
    std::vector<std::byte> bytes(kJet3.pageSize);
    if (file.size() < bytes.size())
        throw notAccess(path, "it is shorter than one page");
    file.read(0, bytes);
    const PageEditor page(PageNo{0}, bytes);
    const PageView view = page.view();
    if (view.u32(0) != 0x00000100 || std::memcmp(view.slice(kSignature, sizeof kSignatureText).data(),
                                                 kSignatureText, sizeof kSignatureText) != 0)
        throw notAccess(path, "the signature is missing");
    const std::uint8_t version = view.u8(kVersion);
    if (version > 1)
        throw notAccess(path,
                        "it is of version " + std::to_string(version) + ", made by Access 2007 or later");

    FileHeader header;
    header.version = version == 0 ? Version::Jet3 : Version::Jet4;
    if (file.size() < header.format().pageSize)
        throw notAccess(path, "it is shorter than one page");
    mask(bytes, header.version);
    header.countryCode = view.u16(kCountryCode);
    header.codePage = view.u16(kCodePage);
    header.encodingKey = view.u32(kEncodingKey);
    const std::span<std::byte> password = page.slice(kPassword, passwordSize(header.version));
    if (header.version == Version::Jet3) {
        header.sortOrder = view.u16(kSortOrderJet3);
    } else {
        header.sortOrder = view.u16(kSortOrderJet4);
        header.sortOrderVersion = view.u8(kSortVersionJet4);
        header.created = view.f64(kCreatedJet4);
        maskPassword(password, header.created);
    }
    header.password = upToZero(password, header.version == Version::Jet3 ? 1 : 2);
    return header;
}

std::vector<std::byte> makeHeaderPage(const FileHeader &header)
{
    const Format &format = header.format();
    std::vector<std::byte> bytes(format.pageSize);
    const PageEditor page(PageNo{0}, bytes);
    page.putU32(0, 0x00000100);
    std::memcpy(page.slice(kSignature, sizeof kSignatureText).data(), kSignatureText, sizeof kSignatureText);
    page.putU8(kVersion, header.version == Version::Jet3 ? 0 : 1);

    // The two maps of page 1 and the definitions of the four catalogue tables.
    constexpr std::array<std::uint32_t, 6> kPointers{0x0100, 0x0101, 2, 3, 4, 5};
    for (std::size_t i = 0; i < kPointers.size(); ++i)
        page.putU32(kFirstPointers + 4 * i, kPointers[i]);
    page.putU16(kCountryCode, header.countryCode);
    page.putU16(kCodePage, header.codePage);
    const std::span<std::byte> password = page.slice(kPassword, passwordSize(header.version));
    std::ranges::copy(header.password, password.begin());
    if (format.isJet3()) {
        page.putU16(kSortOrderJet3, header.sortOrder);
        page.putU16(kBuildJet3, 3428);
    } else {
        page.putU16(kSortOrderJet4, header.sortOrder);
        page.putU8(kSortVersionJet4, header.sortOrderVersion);
        page.putF64(kCreatedJet4, header.created);
        page.putU16(kBuildJet4, 9756);
        page.putU32(kTrailerJet4, 0x654);
        std::memcpy(page.slice(kTrailerJet4 + 4, 4).data(), "4.0", 4);
        maskPassword(password, header.created);
    }
    mask(bytes, header.version);
    for (std::size_t user = 0; user < 256; ++user)
        page.putU16(format.commitCounters + 2 * user, kIdleCounter);
    return bytes;
}

std::vector<std::byte> passwordBytes(const FileHeader &header, const std::string &password)
{
    std::vector<std::byte> stored = TextCodec(header.version, header.codePage).encode(password);
    if (stored.size() > passwordSize(header.version))
        throw AppError(ErrorNumber::PasswordWrong, "A database password has at most 20 characters.");
    return stored;
}

void checkPassword(const FileHeader &header, const std::string &password, const std::string &path)
{
    if (header.password.empty() ||
        attemptOr(false, [&] { return passwordBytes(header, password) == header.password; }))
        return;
    throw AppError(ErrorNumber::PasswordWrong, "The database password does not open the file " + path + ".");
}

} // namespace jet
