// What a dot-matrix printer sets on paper for a stream of text and ESC/P codes.
//
// The interpreter knows the codes that the order stream uses: ESC P (10 to the inch), SI and DC2 (condensed
// on and off), ESC W (double width), ESC J (paper advance in 1/180 inch), ESC C (page length), CAN, CR, LF
// and FF. Any other code is skipped together with its parameters and counted, so that none of them prints as
// text.
//
// Positions count in 1/360 inch, in which every pitch and every advance is whole: 36 a character at 10 to the
// inch, 21 condensed (17.14 to the inch), twice that in double width. They stand for the upper left corner of
// the first character's cell, from the left margin and from the top of the page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace output::escp {

inline constexpr int kUnitsPerInch = 360;
/// What a carriage of 80 columns prints; a character that would end to the right of it goes to the next line.
inline constexpr int kLineWidth = 8 * kUnitsPerInch;
/// Pages of a stream that is no order; what would come behind them is not looked at.
inline constexpr int kMostPages = 10'000;

/// Whether ESC J takes the carriage back to the left margin. The manuals say that it does not, and many a
/// printer does.
enum class PaperAdvance { ReturnsCarriage, KeepsColumn };

/// Characters of one line that follow one another in one width. Blanks at its ends are left out.
struct Run
{
    int page = 0; ///< from 0
    int x = 0;
    int y = 0;
    int pitch = 0; ///< width of one character
    bool condensed = false;
    bool doubleWidth = false;
    std::string text; ///< UTF-8
};

/// A code that was passed over: "ESC E", "BEL", ...
struct SkippedCode
{
    std::string name;
    int count = 0;
};

struct Paper
{
    std::vector<int> pageLengths; ///< one entry a page that the stream has begun
    std::vector<Run> runs;        ///< page by page, downwards
    std::vector<SkippedCode> skipped;
    int wrappedLines = 0;  ///< lines that reached the right edge and went on in the next one
    bool cutShort = false; ///< there are more than kMostPages
};

[[nodiscard]] Paper interpret(std::string_view bytes, PaperAdvance advance);

/// The bytes of a printer file; `path` as the system writes paths. Throws FileError, also when the file is
/// too large to be one.
[[nodiscard]] std::string readStream(const std::string &path);

} // namespace output::escp
