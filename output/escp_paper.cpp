#include "output/escp_paper.h"

#include "common/errors.h"
#include "data/paths.h"
#include "output/escp_codes.h"
#include "output/printer_file.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>

namespace output::escp {

namespace {

constexpr int kTenPerInch = kUnitsPerInch / 10;
constexpr int kCondensed = kUnitsPerInch * 7 / 120; ///< 17.14 to the inch
constexpr int kLineSpacing = kUnitsPerInch / 6;
constexpr int kUsualPage = 11 * kUnitsPerInch;
constexpr int kMostInches = 22;
constexpr int kMostLines = 127;
constexpr int kUnitsPerAdvance = kUnitsPerInch / 180;
constexpr std::size_t kLargestFile = 4'000'000;

class Interpreter
{
public:
    Interpreter(std::string_view bytes, PaperAdvance advance)
        : m_bytes(bytes)
        , m_advance(advance)
    {}

    Paper run()
    {
        while (!m_bytes.empty() && !m_paper.cutShort) {
            const auto byte = static_cast<std::uint8_t>(m_bytes.front());
            const bool isText = byte >= ' ' && byte != 0x7F;
            const std::size_t length = isText ? 1 : codeLength(m_bytes);
            if (isText) {
                print(m_bytes.front());
            } else if (!obey(m_bytes.substr(0, length))) {
                skip(m_bytes.substr(0, length));
            }
            m_bytes.remove_prefix(length);
        }
        // A sheet that was only brought up by the form feed behind the last one bears nothing.
        if (pageIsUntouched() && !m_paper.cutShort)
            m_paper.pageLengths.pop_back();
        return std::move(m_paper);
    }

private:
    [[nodiscard]] int page() const { return static_cast<int>(m_paper.pageLengths.size()) - 1; }
    [[nodiscard]] bool pageIsUntouched() const
    {
        return m_y == 0 && m_x == 0 && (m_paper.runs.empty() || m_paper.runs.back().page < page());
    }
    [[nodiscard]] int pitch() const { return (m_condensed ? kCondensed : kTenPerInch) * (m_double ? 2 : 1); }

    void print(char byte)
    {
        if (m_x + pitch() > kLineWidth) {
            // The printer starts a new line by itself; how far down it goes is up to the model.
            ++m_paper.wrappedLines;
            advance(kLineSpacing);
            m_x = 0;
        }
        if (byte != ' ')
            addToRun(byte);
        m_x += pitch();
    }

    void addToRun(char byte)
    {
        Run *last = m_paper.runs.size() > m_lineStart ? &m_paper.runs.back() : nullptr;
        const bool follows = last && last->condensed == m_condensed && last->doubleWidth == m_double &&
                             m_x >= m_runEnd && (m_x - m_runEnd) % pitch() == 0;
        if (follows) {
            last->text.append(static_cast<std::size_t>((m_x - m_runEnd) / pitch()), ' ');
        } else {
            m_paper.runs.push_back({page(), m_x, m_y, pitch(), m_condensed, m_double, {}});
            last = &m_paper.runs.back();
        }
        last->text += printedText({&byte, 1});
        m_runEnd = m_x + pitch();
    }

    /// False when the code is not known or its parameter makes no sense.
    bool obey(std::string_view code)
    {
        switch (code.front()) {
        case '\r':
            putOnPaper();
            m_x = 0;
            return true;
        case '\n':
            advance(kLineSpacing);
            m_x = 0;
            return true;
        case '\f':
            putOnPaper();
            beginPage();
            m_x = 0;
            return true;
        case '\x0f':
            m_condensed = true;
            return true;
        case '\x12':
            m_condensed = false;
            return true;
        case '\x18':
            m_paper.runs.resize(m_lineStart);
            m_x = 0;
            return true;
        default:
            return code.size() > 1 && obeySequence(code[1], code.substr(2));
        }
    }

    bool obeySequence(char letter, std::string_view parameters)
    {
        const auto parameter = [parameters](std::size_t at) -> int {
            return static_cast<std::uint8_t>(parameters[at]);
        };
        if (letter == 'P') // 10 to the inch, which no code of ours ever leaves
            return true;
        if (parameters.empty()) // the file ends within the code
            return false;
        switch (letter) {
        case 'W':
            m_double = parameter(0) % 16 == 1; // 1 and "1"
            return parameter(0) % 16 <= 1;
        case 'J':
            advance(parameter(0) * kUnitsPerAdvance);
            if (m_advance == PaperAdvance::ReturnsCarriage)
                m_x = 0;
            return true;
        case 'C':
            if (parameters.size() == 2)
                return setPageLength(parameter(1), kMostInches, kUnitsPerInch);
            return setPageLength(parameter(0), kMostLines, kLineSpacing);
        default:
            return false;
        }
    }

    /// The present line becomes the top of a form of that length.
    bool setPageLength(int count, int most, int unit)
    {
        if (count == 0 || count > most)
            return false;
        m_pageLength = count * unit;
        if (m_y != 0) {
            beginPage();
        } else {
            m_paper.pageLengths.back() = m_pageLength;
        }
        return true;
    }

    /// Nothing printed so far can be cancelled or continued any more.
    void putOnPaper() { m_lineStart = m_paper.runs.size(); }

    void advance(int units)
    {
        putOnPaper();
        m_y += units;
        while (m_y >= m_paper.pageLengths.back() && !m_paper.cutShort) {
            const int beyond = m_y - m_paper.pageLengths.back();
            beginPage();
            m_y = beyond;
        }
    }

    void beginPage()
    {
        m_y = 0;
        m_paper.cutShort = page() + 1 == kMostPages;
        if (!m_paper.cutShort)
            m_paper.pageLengths.push_back(m_pageLength);
    }

    void skip(std::string_view code)
    {
        const std::string name = codeName(code);
        const auto known = std::find_if(m_paper.skipped.begin(), m_paper.skipped.end(),
                                        [&](const SkippedCode &other) { return other.name == name; });
        if (known == m_paper.skipped.end()) {
            m_paper.skipped.push_back({name, 1});
        } else {
            ++known->count;
        }
    }

    std::string_view m_bytes; ///< what is still to be read
    PaperAdvance m_advance;
    int m_pageLength = kUsualPage;
    Paper m_paper{.pageLengths = {kUsualPage}, .runs = {}, .skipped = {}};
    int m_x = 0;
    int m_y = 0;
    int m_runEnd = 0;            ///< where the last character of the last run ends
    std::size_t m_lineStart = 0; ///< first run that is still in the printer's line buffer
    bool m_condensed = false;
    bool m_double = false;
};

} // namespace

Paper interpret(std::string_view bytes, PaperAdvance advance)
{
    return Interpreter(bytes, advance).run();
}

std::string readStream(const std::string &path)
{
    const std::string local = data::localPath(path);
    std::ifstream file;
    // Asked first: opening a pipe would wait for somebody at its other end.
    if (data::fileExists(path))
        file.open(local, std::ios::binary);
    if (!file.is_open())
        throw FileError(ErrorNumber::FileNotFound, "There is no print file " + local + " that can be read.");
    std::string bytes(kLargestFile + 1, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (bytes.size() > kLargestFile)
        throw FileError(ErrorNumber::PathAccess, "The file " + local + " is too large to be a print file.");
    return bytes;
}

} // namespace output::escp
