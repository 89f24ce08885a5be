#include "data/jet/text_codec.h"

#include "common/encoding.h"
#include "data/jet/page.h"

#include <algorithm>
#include <iconv.h>

namespace jet {
namespace {

/// A conversion between two encodings of the C library, closed at the end.
class Converter
{
public:
    Converter(const std::string &to, const std::string &from)
        : m_handle(::iconv_open(to.c_str(), from.c_str()))
    {}
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    ~Converter()
    {
        if (isKnown())
            ::iconv_close(m_handle);
    }

    [[nodiscard]] bool isKnown() const
    {
        // The C library marks failure with this pointer value.
        return m_handle != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
    }

    /// Converts as much as it can; `in` is what is left. False when it stopped at something it cannot
    /// convert.
    [[nodiscard]] bool convert(std::string &in, std::string &out) const
    {
        std::string room(in.size() * 4 + 16, '\0');
        char *source = in.data();
        std::size_t sourceLeft = in.size();
        char *target = room.data();
        std::size_t targetLeft = room.size();
        const bool whole =
            ::iconv(m_handle, &source, &sourceLeft, &target, &targetLeft) != static_cast<std::size_t>(-1);
        out.append(room, 0, room.size() - targetLeft);
        in.erase(0, in.size() - sourceLeft);
        return whole;
    }

private:
    iconv_t m_handle;
};

[[nodiscard]] bool isDoubleByte(std::uint16_t codePage)
{
    return codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950 || codePage == 1361;
}

[[nodiscard]] std::string asChars(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

[[nodiscard]] bool isAscii(std::span<const std::byte> bytes)
{
    // Eight at a time: every text of every row is asked.
    constexpr std::uint64_t kAbove = 0x8080'8080'8080'8080;
    std::size_t at = 0;
    for (; at + sizeof kAbove <= bytes.size(); at += sizeof kAbove) {
        if ((loadWhole<std::uint64_t>(bytes.data() + at) & kAbove) != 0)
            return false;
    }
    return std::ranges::all_of(bytes.subspan(at), [](std::byte byte) { return byte < std::byte{0x80}; });
}

[[nodiscard]] std::uint16_t unitAt(std::span<const std::byte> bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[at]) |
                                      std::to_integer<unsigned>(bytes[at + 1]) << 8);
}

/// Joins UTF-16 units to characters.
class Utf16Reader
{
public:
    explicit Utf16Reader(std::string &out)
        : m_out(out)
    {}

    void put(std::uint16_t unit)
    {
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (m_high != 0 && low) {
            appendUtf8(m_out, 0x10000 + ((m_high - 0xD800U) << 10) + (unit - 0xDC00U));
            m_high = 0;
            return;
        }
        finish();
        if (unit >= 0xD800 && unit <= 0xDBFF)
            m_high = unit;
        else
            appendUtf8(m_out, low ? kReplacement : unit);
    }

    void finish()
    {
        if (m_high != 0)
            appendUtf8(m_out, kReplacement);
        m_high = 0;
    }

private:
    std::string &m_out;
    std::uint16_t m_high = 0;
};

[[nodiscard]] std::string decodePlainUtf16(std::span<const std::byte> stored)
{
    std::string text;
    text.reserve(stored.size() / 2);
    Utf16Reader reader(text);
    for (std::size_t i = 0; i + 1 < stored.size(); i += 2)
        reader.put(unitAt(stored, i));
    reader.finish();
    return text;
}

/// `stored` without the mark FF FE. A zero byte switches between one and two bytes a unit.
[[nodiscard]] std::string decodeCompressed(std::span<const std::byte> stored)
{
    std::string text;
    text.reserve(stored.size());
    Utf16Reader reader(text);
    bool narrow = true;
    for (std::size_t i = 0; i < stored.size();) {
        if (stored[i] == std::byte{0}) {
            narrow = !narrow;
            ++i;
        } else if (narrow) {
            reader.put(std::to_integer<std::uint16_t>(stored[i++]));
        } else if (i + 1 < stored.size()) {
            reader.put(unitAt(stored, i));
            i += 2;
        } else {
            break;
        }
    }
    reader.finish();
    return text;
}

void appendUnit(Bytes &out, char16_t unit)
{
    out.push_back(static_cast<std::byte>(unit & 0xFF));
    out.push_back(static_cast<std::byte>(unit >> 8));
}

/// The compressed form, or nothing where it is not allowed or not shorter.
[[nodiscard]] Bytes compressed(const std::u16string &units)
{
    const bool startsLikeMark = !units.empty() && units[0] == 0xFEFF;
    if (units.size() < 3 && !startsLikeMark)
        return {};
    Bytes out{std::byte{0xFF}, std::byte{0xFE}};
    bool narrow = true;
    for (const char16_t unit : units) {
        // A low byte of 0 would read as a switch.
        if ((unit & 0xFF) == 0)
            return {};
        if ((unit < 0x100) != narrow) {
            narrow = !narrow;
            out.push_back(std::byte{0});
        }
        if (narrow)
            out.push_back(static_cast<std::byte>(unit));
        else
            appendUnit(out, unit);
    }
    // Stored plain, a text that begins with U+FEFF would be taken for a compressed one.
    return out.size() < units.size() * 2 || startsLikeMark ? out : Bytes{};
}

} // namespace

std::u16string toUtf16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = nextUtf8(text, at);
        if (character >= 0x10000) {
            units.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
        } else {
            units.push_back(static_cast<char16_t>(character));
        }
    }
    return units;
}

TextCodec::TextCodec(Version version, std::uint16_t codePage)
    : m_version(version)
{
    if (version == Version::Jet4)
        return;
    const std::string name = "CP" + std::to_string(codePage);
    const Converter converter("UTF-32LE", name);
    if (isDoubleByte(codePage) && converter.isKnown())
        m_multiByte = name;
    for (std::size_t i = 0; i < m_characters.size(); ++i) {
        m_characters[i] = static_cast<char32_t>(i);
        if (i < 0x80)
            continue;
        std::string one(1, static_cast<char>(i));
        std::string converted;
        if (codePage == 1252 || !converter.isKnown()) {
            m_characters[i] = i < 0xA0 ? kWindows1252[i - 0x80] : static_cast<char32_t>(i);
        } else if (converter.convert(one, converted) && converted.size() == 4) {
            m_characters[i] = static_cast<char32_t>(static_cast<std::uint8_t>(converted[0])) |
                              static_cast<char32_t>(static_cast<std::uint8_t>(converted[1])) << 8 |
                              static_cast<char32_t>(static_cast<std::uint8_t>(converted[2])) << 16;
        }
        m_bytes.emplace_back(m_characters[i], static_cast<std::uint8_t>(i));
    }
    std::ranges::sort(m_bytes);
}

std::string TextCodec::decode(std::span<const std::byte> stored) const
{
    if (m_version == Version::Jet4) {
        if (stored.size() >= 2 && stored[0] == std::byte{0xFF} && stored[1] == std::byte{0xFE})
            return decodeCompressed(stored.subspan(2));
        return decodePlainUtf16(stored);
    }
    if (isAscii(stored))
        return asChars(stored);
    if (!m_multiByte.empty())
        return decodeMultiByte(stored);
    std::string text;
    text.reserve(stored.size() + 8);
    for (const std::byte byte : stored)
        appendUtf8(text, m_characters[std::to_integer<std::size_t>(byte)]);
    return text;
}

std::string TextCodec::decodeMultiByte(std::span<const std::byte> stored) const
{
    const Converter converter("UTF-8", m_multiByte);
    std::string left = asChars(stored);
    std::string text;
    while (!converter.convert(left, text) && !left.empty()) {
        appendUtf8(text, static_cast<std::uint8_t>(left[0]));
        left.erase(0, 1);
    }
    return text;
}

Bytes TextCodec::encode(std::string_view text, bool compress) const
{
    if (m_version == Version::Jet3)
        return m_multiByte.empty() ? encodeCodePage(text) : encodeMultiByte(text);
    const std::u16string units = toUtf16(text);
    if (compress || (!units.empty() && units[0] == 0xFEFF)) {
        Bytes shortForm = compressed(units);
        if (!shortForm.empty())
            return shortForm;
    }
    Bytes out;
    out.reserve(units.size() * 2);
    for (const char16_t unit : units)
        appendUnit(out, unit);
    return out;
}

Bytes TextCodec::encodeCodePage(std::string_view text) const
{
    Bytes out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = nextUtf8(text, at);
        if (character < 0x80) {
            out.push_back(static_cast<std::byte>(character));
            continue;
        }
        const auto found =
            std::ranges::lower_bound(m_bytes, character, {}, [](const auto &pair) { return pair.first; });
        const bool there = found != m_bytes.end() && found->first == character;
        out.push_back(there ? std::byte{found->second} : std::byte{'?'});
    }
    return out;
}

Bytes TextCodec::encodeMultiByte(std::string_view text) const
{
    const Converter converter(m_multiByte, "UTF-8");
    std::string left(text);
    std::string converted;
    while (!converter.convert(left, converted) && !left.empty()) {
        std::size_t skipped = 0;
        const char32_t character = nextUtf8(left, skipped);
        // Characters below 100 hexadecimal stand for single bytes without a meaning; decode() made them.
        converted.push_back(character >= 0x80 && character < 0x100 ? static_cast<char>(character) : '?');
        left.erase(0, skipped);
    }
    Bytes out(converted.size());
    std::ranges::transform(converted, out.begin(), [](char c) { return static_cast<std::byte>(c); });
    return out;
}

std::size_t TextCodec::length(std::string_view text) const
{
    if (m_version == Version::Jet4)
        return toUtf16(text).size();
    return encode(text).size();
}

} // namespace jet
