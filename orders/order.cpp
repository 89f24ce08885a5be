#include "orders/order.h"

#include "common/format.h"
#include "common/numbers.h"

#include <array>
#include <charconv>
#include <string_view>

namespace orders {

namespace {

constexpr BgrColour kLightGrey = 0xE0E0E0;
constexpr BgrColour kLightOrange = 0xC0E0FF;
constexpr BgrColour kLightRed = 0xC0C0FF;
constexpr BgrColour kCyan = 0xFFFF00;

/// The product as a decimal number of 15 digits, which is what a double holds exactly. Without it 1.5 x 1.15
/// would be 1.7249999999999999 and lose its last cent to the rounding of the text.
double decimalProduct(double a, double b)
{
    std::array<char, 64> digits{};
    const double product = a * b;
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), product, std::chars_format::general, 15);
    double result = product;
    std::from_chars(digits.data(), written.ptr, result);
    return result;
}

} // namespace

const std::string &gridFormat()
{
    static const std::string format =
        "^Sl.No.  |^Part Number                |<Part Name                                           "
        "|^Total Sale  |<Last Sale       |^Avg.Qty.   |^Pres.Qty. |^Min.Q.   |^M.O.Q   |^Order Qty.  "
        "|>Rate      |>Amount          |";
    return format;
}

void colourLine(TextGrid &lines, int row, LineColours colours)
{
    if (row < 1 || row >= lines.rows())
        return;
    const BgrColour figure = colours == LineColours::Filled ? kCyan : kLightGrey;
    lines.setBackColour(row, kColAverage, figure);
    lines.setBackColour(row, kColPresent, kLightOrange);
    lines.setBackColour(row, kColMinimum, figure);
    lines.setBackColour(row, kColMoq, kButtonFace);
    // Kept: the one way marks column 10, the other two column 11.
    lines.setBackColour(row, colours == LineColours::Designed ? kColRate : kColAmount, kLightRed);
}

Currency netTotal(const TextGrid &lines)
{
    Currency total;
    for (int row = 1; row < lines.rows(); ++row) {
        if (!lines.text(row, kColPartNo).empty())
            total += Currency::fromText(lines.text(row, kColAmount));
    }
    return total;
}

std::string netTotalText(const TextGrid &lines)
{
    return amountText(netTotal(lines));
}

std::string lineAmountText(const TextGrid &lines, int row)
{
    return amountText(
        decimalProduct(leadingNumber(lines.text(row, kColQty)), leadingNumber(lines.text(row, kColRate))));
}

} // namespace orders
