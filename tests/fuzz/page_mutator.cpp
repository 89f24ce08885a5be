// Mutations that know the pages of an Access file, so that damage reaches the structures behind the header.
#include "data/jet/format.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t longest);

namespace {

constexpr std::size_t kVersionByte = 0x14; ///< of the header page: 0 for Jet 3
constexpr std::size_t kRowBytes = 96;      ///< window at a row's end, where its shape is told

class PageMutator
{
public:
    PageMutator(std::uint8_t *data, std::size_t size, std::size_t longest, unsigned seed)
        : m_data(data)
        , m_size(size)
        , m_longest(longest)
        , m_format(size > kVersionByte && data[kVersionByte] != 0 ? jet::kJet4 : jet::kJet3)
        , m_random(seed)
    {}

    std::size_t mutate()
    {
        if (m_size < 2 * m_format.pageSize)
            return LLVMFuzzerMutate(m_data, m_size, m_longest);
        for (std::size_t changes = 1 + below(4); changes > 0; --changes)
            mutateOnce();
        return m_size;
    }

    /// Puts pages of another file in place of this one's.
    std::size_t cross(const std::uint8_t *other, std::size_t size)
    {
        const std::size_t theirs = size / m_format.pageSize;
        if (pages() < 2 || theirs < 2)
            return m_size;
        for (std::size_t changes = 1 + below(3); changes > 0; --changes)
            std::memcpy(page(somePage()), other + (1 + below(theirs - 1)) * m_format.pageSize,
                        m_format.pageSize);
        return m_size;
    }

private:
    void mutateOnce()
    {
        switch (below(16)) {
        case 0: // another page in its place
            std::memcpy(page(somePage()), page(somePage()), m_format.pageSize);
            break;
        case 1:
            resize();
            break;
        case 2:
            page(somePage())[0] = static_cast<std::uint8_t>(below(7));
            break;
        case 3:
            if (below(4) == 0)
                LLVMFuzzerMutate(m_data, m_format.pageSize, m_format.pageSize);
            break;
        case 4:
        case 5:
        case 6: // the library's own mutations on a part of a page, with what it learnt from comparisons
            window();
            break;
        case 7:
            copyInside();
            break;
        default:
            putNumber(page(somePage()) + place());
        }
    }

    void resize()
    {
        const std::size_t count = below(4) == 0 ? pages() + 1 + below(3) : 2 + below(pages());
        const std::size_t size = count * m_format.pageSize - (below(8) == 0 ? below(m_format.pageSize) : 0);
        if (size > m_longest)
            return;
        if (size > m_size)
            std::memset(m_data + m_size, 0, size - m_size);
        m_size = std::max(size, 2 * m_format.pageSize);
    }

    void window()
    {
        const std::size_t at = place();
        const std::size_t size = std::min<std::size_t>(1 + below(32), m_format.pageSize - at);
        LLVMFuzzerMutate(page(somePage()) + at, size, size);
    }

    void copyInside()
    {
        std::uint8_t *bytes = page(somePage());
        const std::size_t size = 1 + below(64);
        std::memmove(bytes + below(m_format.pageSize - size), bytes + below(m_format.pageSize - size), size);
    }

    void putNumber(std::uint8_t *at)
    {
        static constexpr std::array<std::uint32_t, 14> kTelling{
            0, 1, 2, 5, 0x7F, 0x80, 0xFF, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x4E};
        std::uint32_t value = kTelling[below(kTelling.size())];
        switch (below(4)) {
        case 0: // a page, or a row on it
            value = static_cast<std::uint32_t>(below(2) == 0 ? somePage() : somePage() << 8 | below(8));
            break;
        case 1: // near to what is there
            std::memcpy(&value, at, sizeof value);
            value += static_cast<std::uint32_t>(below(9)) - 4;
            break;
        case 2: // a place on a page
            value = static_cast<std::uint32_t>(below(m_format.pageSize + 2) | (below(4) << 14));
            break;
        default:
            break;
        }
        std::memcpy(at, &value, std::size_t{1} << below(3));
    }

    /// A place on a page: mostly in its head, where the structures are, or in the part that is in use.
    std::size_t place()
    {
        const std::size_t last = m_format.pageSize - sizeof(std::uint32_t);
        switch (below(4)) {
        case 0:
            return below(m_format.definitionFixed);
        case 1:
            return below(std::size_t{512});
        case 2:
            return last - below(kRowBytes);
        default:
            return below(last);
        }
    }

    [[nodiscard]] std::size_t pages() const { return m_size / m_format.pageSize; }
    [[nodiscard]] std::size_t somePage() { return 1 + below(pages() - 1); }
    [[nodiscard]] std::uint8_t *page(std::size_t number) { return m_data + number * m_format.pageSize; }
    [[nodiscard]] std::size_t below(std::size_t limit) { return m_random() % limit; }

    std::uint8_t *m_data;
    std::size_t m_size;
    std::size_t m_longest;
    const jet::Format &m_format;
    std::minstd_rand m_random;
};

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t longest,
                                               unsigned seed)
{
    return PageMutator(data, size, longest, seed).mutate();
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t *first, std::size_t firstSize,
                                                 const std::uint8_t *second, std::size_t secondSize,
                                                 std::uint8_t *out, std::size_t longest, unsigned seed)
{
    const std::size_t size = std::min(firstSize, longest);
    std::memcpy(out, first, size);
    return PageMutator(out, size, longest, seed).cross(second, secondSize);
}
