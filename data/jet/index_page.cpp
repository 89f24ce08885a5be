#include "data/jet/index_page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>

namespace jet {
namespace {

constexpr std::size_t kOwner = 4; ///< u32, definition page of the table
constexpr std::size_t kMaskWordBits = 64;

/// Bytes of the smallest entry: a key is never empty.
std::size_t smallestEntry(bool leaf)
{
    return 1 + kRowPlaceSize + (leaf ? 0 : kChildSize);
}

std::size_t maskBytes(const Format &format)
{
    return format.indexEntries - format.indexMask;
}

/// The bit mask of entry ends, held in words so that whole stretches can be moved.
class EndMask
{
public:
    explicit EndMask(std::span<const std::byte> bytes)
    {
        for (std::size_t at = 0, i = 0; at < bytes.size(); at += sizeof(std::uint64_t), ++i) {
            std::uint64_t word = 0;
            for (std::size_t b = std::min(sizeof word, bytes.size() - at); b-- > 0;)
                word = word << 8 | std::to_integer<std::uint64_t>(bytes[at + b]);
            m_words[i] = word;
            m_count = i + 1;
        }
    }

    void store(std::span<std::byte> bytes) const
    {
        for (std::size_t at = 0; at < bytes.size(); ++at)
            bytes[at] = static_cast<std::byte>(m_words[at / 8] >> (at % 8 * 8) & 0xFF);
    }

    void set(std::size_t bit) { m_words[bit / kMaskWordBits] |= std::uint64_t{1} << bit % kMaskWordBits; }

    /// Moves all marks behind `at` up by `by`.
    void raise(std::size_t at, std::size_t by)
    {
        const std::size_t words = by / kMaskWordBits;
        const std::size_t bits = by % kMaskWordBits;
        const std::size_t first = (at + 1) / kMaskWordBits;
        const std::uint64_t keep = lowBits((at + 1) % kMaskWordBits);
        const std::uint64_t kept = m_words[first] & keep;
        m_words[first] &= ~keep;
        for (std::size_t i = m_count; i-- > first;) {
            std::uint64_t word = 0;
            if (i >= first + words)
                word = m_words[i - words] << bits;
            if (bits > 0 && i >= first + words + 1)
                word |= m_words[i - words - 1] >> (kMaskWordBits - bits);
            m_words[i] = word;
        }
        m_words[first] |= kept;
    }

    /// Drops the marks in (at, at + by] and moves those behind them down by `by`.
    void lower(std::size_t at, std::size_t by)
    {
        const std::size_t words = by / kMaskWordBits;
        const std::size_t bits = by % kMaskWordBits;
        const std::size_t first = (at + 1) / kMaskWordBits;
        const std::uint64_t keep = lowBits((at + 1) % kMaskWordBits);
        const std::uint64_t kept = m_words[first] & keep;
        for (std::size_t i = first; i < m_count; ++i) {
            std::uint64_t word = i + words < m_count ? m_words[i + words] >> bits : 0;
            if (bits > 0 && i + words + 1 < m_count)
                word |= m_words[i + words + 1] << (kMaskWordBits - bits);
            m_words[i] = word;
        }
        m_words[first] = (m_words[first] & ~keep) | kept;
    }

private:
    static std::uint64_t lowBits(std::size_t count) { return (std::uint64_t{1} << count) - 1; }

    std::array<std::uint64_t, 57> m_words{}; // 453 bytes in Jet 4
    std::size_t m_count = 0;
};

void putFree(const Format &format, const PageEditor &page, std::size_t used)
{
    page.putU16(IndexPage::kFreeBytes, static_cast<std::uint16_t>(format.entryCapacity() - used));
}

} // namespace

std::size_t commonPrefix(BytesView a, BytesView b)
{
    const std::size_t size = std::min(a.size(), b.size());
    return static_cast<std::size_t>(std::mismatch(a.begin(), a.begin() + size, b.begin()).first - a.begin());
}

void appendChild(KeyBytes &entry, PageNo child)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        entry.push_back(static_cast<unsigned char>(number(child) >> shift & 0xFF));
}

PageNo childOf(BytesView nodeEntry)
{
    std::uint32_t child = 0;
    for (const unsigned char byte : nodeEntry.substr(nodeEntry.size() - kChildSize))
        child = child << 8 | byte;
    return PageNo{child};
}

std::size_t EntryList::lowerBound(BytesView wanted) const
{
    std::size_t low = 0;
    std::size_t high = size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (compareBytes(at(middle), wanted) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void EntryList::append(BytesView first, BytesView rest)
{
    m_bytes.append(first).append(rest);
    m_ends.push_back(m_bytes.size());
}

void EntryList::insert(std::size_t i, BytesView entry)
{
    const std::size_t start = i == 0 ? 0 : m_ends[i - 1];
    m_bytes.insert(start, entry.data(), entry.size());
    m_ends.insert(m_ends.begin() + static_cast<std::ptrdiff_t>(i), start);
    for (std::size_t k = i; k < m_ends.size(); ++k)
        m_ends[k] += entry.size();
}

void EntryList::erase(std::size_t i)
{
    const std::size_t length = at(i).size();
    m_bytes.erase(m_ends[i] - length, length);
    m_ends.erase(m_ends.begin() + static_cast<std::ptrdiff_t>(i));
    for (std::size_t k = i; k < m_ends.size(); ++k)
        m_ends[k] -= length;
}

IndexPage::IndexPage(const Format &format, PageView view, PageNo owner)
    : m_format(&format)
    , m_view(view)
{
    const std::uint8_t kind = view.u8(0);
    m_head.leaf = kind == static_cast<std::uint8_t>(PageKind::IndexLeaf);
    if ((!m_head.leaf && kind != static_cast<std::uint8_t>(PageKind::IndexNode)) ||
        view.size() != format.pageSize)
        throw damaged(view.page(), "an index points to a page that is not of an index");
    if (view.u32(kOwner) != number(owner))
        throw damaged(view.page(), "an index page belongs to another table");
    m_head.level = view.u8(format.indexLevel);
    m_head.previous = PageNo{view.u32(format.indexPrevious)};
    m_head.next = PageNo{view.u32(format.indexNext)};
    m_head.tail = PageNo{m_head.leaf ? 0 : view.u32(format.indexTail)};
    m_prefix = format.isJet3() ? view.u8(format.indexPrefix) : view.u16(format.indexPrefix);
    m_used = lastMark();
    if (m_used > format.entryCapacity())
        throw damaged(view.page(), "index entries reach past the end of the page");
    if (m_used > 0 && (endOf(0) < m_prefix || endOf(0) < smallestEntry(m_head.leaf)))
        throw damaged(view.page(), "the first index entry is too short");
}

std::size_t IndexPage::lastMark() const
{
    const unsigned char *mask = bytes(m_format->indexMask);
    std::size_t at = maskBytes(*m_format);
    // Most of the mask of a page that is not full is zero: skip it in words.
    std::uint64_t word = 0;
    while (at >= sizeof word) {
        std::memcpy(&word, mask + at - sizeof word, sizeof word);
        if (word != 0)
            break;
        at -= sizeof word;
    }
    while (at > 0) {
        --at;
        if (mask[at] != 0)
            return at * 8 + static_cast<std::size_t>(std::bit_width(mask[at])) - 1;
    }
    return 0;
}

std::size_t IndexPage::endOf(std::size_t offset) const
{
    const unsigned char *mask = bytes(m_format->indexMask);
    const std::size_t first = offset + 1;
    auto marks = static_cast<unsigned char>(mask[first / 8] & 0xFFU << first % 8);
    for (std::size_t at = first / 8;;) {
        if (marks != 0)
            return at * 8 + static_cast<std::size_t>(std::countr_zero(marks));
        // Behind `offset` stands at least the mark of the last entry.
        marks = mask[++at];
    }
}

std::size_t IndexPage::startOf(std::size_t offset) const
{
    const unsigned char *mask = bytes(m_format->indexMask);
    auto marks = static_cast<unsigned char>(mask[offset / 8] & 0xFFU >> (7 - offset % 8));
    for (std::size_t at = offset / 8;;) {
        if (marks != 0)
            return at * 8 + static_cast<std::size_t>(std::bit_width(marks)) - 1;
        if (at == 0)
            return 0;
        marks = mask[--at];
    }
}

BytesView IndexPage::stored(std::size_t start) const
{
    const std::size_t size = endOf(start) - start;
    if (start > 0 && size + m_prefix < smallestEntry(m_head.leaf))
        throw damaged(m_view.page(), m_format->indexEntries + start, "an index entry is too short");
    return {bytes(m_format->indexEntries + start), size};
}

void IndexPage::read(std::size_t start, KeyBytes &into) const
{
    if (start > 0)
        into.assign(bytes(m_format->indexEntries), m_prefix);
    else
        into.clear();
    into.append(stored(start));
}

KeyBytes IndexPage::entry(std::size_t start) const
{
    KeyBytes whole;
    read(start, whole);
    return whole;
}

RowId IndexPage::placeBefore(std::size_t end) const
{
    std::uint32_t pointer = 0;
    for (const std::byte byte : m_view.slice(m_format->indexEntries + end - kRowPlaceSize, kRowPlaceSize))
        pointer = pointer << 8 | std::to_integer<std::uint32_t>(byte);
    return RowId::fromPointer(pointer);
}

PageNo IndexPage::child(std::size_t start) const
{
    const BytesView tail = stored(start);
    return childOf(tail.size() >= kChildSize ? tail : BytesView{entry(start)});
}

EntryList IndexPage::entries() const
{
    EntryList list;
    const BytesView shared{bytes(m_format->indexEntries), m_prefix};
    for (std::size_t start = 0; start < m_used; start = endOf(start))
        list.append(start == 0 ? BytesView{} : shared, stored(start));
    return list;
}

std::size_t IndexPage::lowerBound(BytesView wanted) const
{
    if (m_used == 0)
        return 0;
    const std::size_t child = m_head.leaf ? 0 : kChildSize;
    const BytesView first = stored(0);
    if (compareBytes(first.substr(0, first.size() - child), wanted) >= 0)
        return 0;
    // All other entries begin with the same bytes as the first.
    const int order = compareBytes(first.substr(0, m_prefix), wanted.substr(0, m_prefix));
    if (order != 0)
        return order < 0 ? m_used : endOf(0);
    const BytesView rest = wanted.substr(m_prefix);
    std::size_t low = endOf(0);
    std::size_t high = m_used;
    while (low < high) {
        const std::size_t start = startOf((low + high) / 2);
        const BytesView entry = stored(start);
        if (entry.size() < child) // the shared bytes reach into the child page
            throw damaged(m_view.page(), m_format->indexEntries + start, "two index entries are equal");
        if (compareBytes(entry.substr(0, entry.size() - child), rest) < 0)
            low = start + entry.size();
        else
            high = start;
    }
    return low;
}

bool IndexPage::equals(std::size_t start, BytesView wanted) const
{
    if (start >= m_used)
        return false;
    const KeyBytes whole = entry(start);
    return BytesView{whole}.substr(0, whole.size() - (m_head.leaf ? 0 : kChildSize)) == wanted;
}

std::optional<std::size_t> fittingPrefix(const Format &format, const EntryList &list, std::size_t first,
                                         std::size_t last)
{
    const std::size_t whole = list.bytes(first, last);
    if (whole <= format.entryCapacity())
        return 0;
    const std::size_t longest = format.isJet3() ? 0xFF : 0xFFFF;
    const std::size_t prefix = std::min(longest, commonPrefix(list.at(first), list.at(last - 1)));
    if (whole - prefix * (last - first - 1) <= format.entryCapacity())
        return prefix;
    return std::nullopt;
}

void writeIndexPage(const Format &format, const PageEditor &page, PageNo owner, const IndexPageHead &head,
                    const EntryList &list, std::size_t first, std::size_t last)
{
    const auto prefix =
        first == last ? std::optional<std::size_t>(0) : fittingPrefix(format, list, first, last);
    if (!prefix)
        throw std::logic_error("index entries are written that do not fit their page");
    std::ranges::fill(page.bytes(), std::byte{0});
    page.putU8(0, static_cast<std::uint8_t>(head.leaf ? PageKind::IndexLeaf : PageKind::IndexNode));
    page.putU8(1, 1);
    page.putU32(kOwner, number(owner));
    page.putU32(format.indexPrevious, number(head.previous));
    page.putU32(format.indexNext, number(head.next));
    page.putU32(format.indexTail, number(head.tail));
    if (format.isJet3())
        page.putU8(format.indexPrefix, static_cast<std::uint8_t>(*prefix));
    else
        page.putU16(format.indexPrefix, static_cast<std::uint16_t>(*prefix));
    page.putU8(format.indexLevel, head.level);
    std::size_t used = 0;
    for (std::size_t i = first; i < last; ++i) {
        const BytesView entry = list.at(i).substr(i == first ? 0 : *prefix);
        std::memcpy(page.slice(format.indexEntries + used, entry.size()).data(), entry.data(), entry.size());
        used += entry.size();
        page.bytes()[format.indexMask + used / 8] |= std::byte{1} << used % 8;
    }
    putFree(format, page, used);
}

bool insertInPlace(const Format &format, const PageEditor &page, PageNo owner, std::size_t start,
                   BytesView entry)
{
    const IndexPage now(format, page.view(), owner);
    const std::size_t used = now.used();
    if (const std::size_t prefix = now.prefix(); prefix > 0) {
        const std::span<const std::byte> shared = page.view().slice(format.indexEntries, prefix);
        // A new first entry would have to give the others their beginning.
        if (start == 0 || entry.size() <= prefix || std::memcmp(shared.data(), entry.data(), prefix) != 0)
            return false;
        entry.remove_prefix(prefix);
    }
    if (entry.size() > format.entryCapacity() - used)
        return false;
    const std::span<std::byte> area = page.slice(format.indexEntries, format.entryCapacity());
    const std::span<std::byte> mask = page.slice(format.indexMask, maskBytes(format));
    if (start < used) {
        std::memmove(&area[start + entry.size()], &area[start], used - start);
        EndMask marks(mask);
        marks.raise(start, entry.size());
        marks.set(start + entry.size());
        marks.store(mask);
    } else {
        const std::size_t end = start + entry.size();
        mask[end / 8] |= std::byte{1} << end % 8;
    }
    std::memcpy(&area[start], entry.data(), entry.size());
    putFree(format, page, used + entry.size());
    return true;
}

bool eraseInPlace(const Format &format, const PageEditor &page, PageNo owner, std::size_t start)
{
    const IndexPage now(format, page.view(), owner);
    if (start == 0 && now.prefix() > 0)
        return false;
    const std::size_t used = now.used();
    const std::size_t size = now.endOf(start) - start;
    const std::span<std::byte> area = page.slice(format.indexEntries, format.entryCapacity());
    const std::span<std::byte> mask = page.slice(format.indexMask, maskBytes(format));
    std::memmove(area.data() + start, area.data() + start + size, used - start - size);
    std::memset(area.data() + used - size, 0, size);
    EndMask marks(mask);
    marks.lower(start, size);
    marks.store(mask);
    putFree(format, page, used - size);
    return true;
}

} // namespace jet
