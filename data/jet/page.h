// Checked views of the bytes of one page (or of a definition joined from several pages).
//
// Every read is bounds-checked and throws CorruptFile naming page and offset; nothing casts a pointer to a
// struct. Numbers are little-endian.
#pragma once

#include "common/errors.h"
#include "data/jet/format.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

namespace jet {

/// "page 214, offset 12" and a reason, as a CorruptFile.
[[nodiscard]] CorruptFile damaged(PageNo page, std::size_t at, const std::string &reason);
[[nodiscard]] CorruptFile damaged(PageNo page, const std::string &reason);

[[noreturn]] void throwPastEnd(PageNo page, std::size_t at);

/// A little-endian number of `size` bytes.
[[nodiscard]] inline std::uint64_t loadNumber(const std::byte *bytes, std::size_t size)
{
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;)
        value = value << 8 | std::to_integer<std::uint64_t>(bytes[i]);
    return value;
}

/// The same for the size of a type: one instruction where the machine has this order.
template <class Whole>
[[nodiscard]] inline Whole loadWhole(const std::byte *bytes)
{
    if constexpr (std::endian::native != std::endian::little)
        return static_cast<Whole>(loadNumber(bytes, sizeof(Whole)));
    Whole value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// Read-only view.
class PageView
{
public:
    PageView(PageNo page, std::span<const std::byte> bytes)
        : m_page(page)
        , m_bytes(bytes)
    {}

    [[nodiscard]] PageNo page() const { return m_page; }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] std::span<const std::byte> bytes() const { return m_bytes; }

    [[nodiscard]] std::span<const std::byte> slice(std::size_t at, std::size_t count) const
    {
        // Written so that neither side can overflow: at + count might.
        if (at > m_bytes.size() || count > m_bytes.size() - at) [[unlikely]]
            throwPastEnd(m_page, at);
        return m_bytes.subspan(at, count);
    }

    [[nodiscard]] std::uint8_t u8(std::size_t at) const
    {
        return std::to_integer<std::uint8_t>(slice(at, 1)[0]);
    }
    [[nodiscard]] std::uint16_t u16(std::size_t at) const
    {
        return loadWhole<std::uint16_t>(slice(at, 2).data());
    }
    [[nodiscard]] std::uint32_t u24(std::size_t at) const
    {
        return static_cast<std::uint32_t>(loadNumber(slice(at, 3).data(), 3));
    }
    [[nodiscard]] std::uint32_t u32(std::size_t at) const
    {
        return loadWhole<std::uint32_t>(slice(at, 4).data());
    }
    [[nodiscard]] std::int64_t i64(std::size_t at) const
    {
        return loadWhole<std::int64_t>(slice(at, 8).data());
    }
    [[nodiscard]] double f64(std::size_t at) const { return std::bit_cast<double>(i64(at)); }

private:
    PageNo m_page;
    std::span<const std::byte> m_bytes;
};

/// Writable view; the same checks.
class PageEditor
{
public:
    PageEditor(PageNo page, std::span<std::byte> bytes)
        : m_page(page)
        , m_bytes(bytes)
    {}

    [[nodiscard]] PageView view() const { return {m_page, m_bytes}; }
    [[nodiscard]] PageNo page() const { return m_page; }
    [[nodiscard]] std::span<std::byte> bytes() const { return m_bytes; }
    [[nodiscard]] std::span<std::byte> slice(std::size_t at, std::size_t count) const
    {
        if (at > m_bytes.size() || count > m_bytes.size() - at)
            throwPastEnd(m_page, at);
        return m_bytes.subspan(at, count);
    }

    void putU8(std::size_t at, std::uint8_t value) const { put(at, 1, value); }
    void putU16(std::size_t at, std::uint16_t value) const { put(at, 2, value); }
    void putU24(std::size_t at, std::uint32_t value) const { put(at, 3, value); }
    void putU32(std::size_t at, std::uint32_t value) const { put(at, 4, value); }
    void putI64(std::size_t at, std::int64_t value) const { put(at, 8, static_cast<std::uint64_t>(value)); }
    void putF64(std::size_t at, double value) const { putI64(at, std::bit_cast<std::int64_t>(value)); }

private:
    void put(std::size_t at, std::size_t count, std::uint64_t value) const
    {
        for (std::byte &byte : slice(at, count)) {
            byte = static_cast<std::byte>(value & 0xFF);
            value >>= 8;
        }
    }

    PageNo m_page;
    std::span<std::byte> m_bytes;
};

} // namespace jet
