// Formatting of printed and shown numbers and cells, and the numeric key filter.
#pragma once

#include "common/currency.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class BlankIfZero : bool { No, Yes };
enum class Grouping : bool { None, Indian };

/// A number for print. `decimals` 0, 1 or 2; any other count gives "". Indian grouping puts a comma before
/// the last three integer digits and before every two digits to their left: 12,34,567.00. Rounds halves away
/// from zero.
[[nodiscard]] std::string Format_Num(double value, std::uint8_t decimals, BlankIfZero blankIfZero,
                                     Grouping grouping);
/// The same for an exact amount.
[[nodiscard]] std::string Format_Num(Currency value, std::uint8_t decimals, BlankIfZero blankIfZero,
                                     Grouping grouping);

/// A cell of fixed width. `alignment` 0 is left, 1 right, any other value the system's own "centred": half
/// the spare width goes before the text and the result is then right-aligned, so the text ends flush right.
/// "0", "0.00", ".00" and blank texts give a blank cell; longer texts are cut. `trailing` blanks follow the
/// cell. Width counts characters of the text (UTF-8).
[[nodiscard]] std::string Format_Cell(std::string_view text, std::int32_t width, std::int32_t alignment,
                                      std::int32_t trailing);

/// An amount with two decimals ("#####0.00" and its kind): halves away from zero on the decimal value.
[[nodiscard]] std::string amountText(Currency value);
[[nodiscard]] std::string amountText(double value);

/// Keeps Backspace (8), Enter (13), "-" (45) and the digits (48 to 57); any other key code becomes 0.
void Key_Num(std::int16_t &keyCode);

/// ASCII and Latin letters of UTF-8 text turned to upper case, independent of the user's locale.
[[nodiscard]] std::string upperText(std::string_view text);
/// Without leading and trailing blanks (U+0020).
[[nodiscard]] std::string_view trimmed(std::string_view text);
/// Equal without regard to ASCII and Latin letter case.
[[nodiscard]] bool equalNoCase(std::string_view a, std::string_view b);
/// Number of characters of a UTF-8 text.
[[nodiscard]] std::size_t characterCount(std::string_view text);
/// The first `count` characters of a UTF-8 text, or all of it.
[[nodiscard]] std::string_view firstCharacters(std::string_view text, std::size_t count);
