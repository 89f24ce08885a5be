// Index keys: the bytes by which an index orders rows, and the text order that follows from them.
//
// docs/jet-format.md, "Index keys". Keys compare as unsigned bytes. Text keys do not tell case apart and
// leave out trailing blanks; a text with a character outside the key tables has no key.
#pragma once

#include "data/jet/types.h"

#include <optional>
#include <string>
#include <string_view>

namespace jet {

using KeyBytes = std::basic_string<unsigned char>;

/// Appends the key of one field to `out`: start byte and value bytes. False, with `out` unchanged, when the
/// value has no key: a text character outside the tables, a sort order other than General, NaN, a type that
/// cannot be indexed.
[[nodiscard]] bool appendKey(KeyBytes &out, const Value &value, const Column &column, bool ascending,
                             Version version);

/// The part of an ascending text key that every longer text with this beginning shares (start byte included),
/// for "starts with" searches; the caller still tests the real text. Nothing when the text has no key.
[[nodiscard]] std::optional<KeyBytes> textPrefixKey(std::string_view text, Version version);

/// Orders two UTF-8 texts as the files of that version do: without regard to case, by the General order.
/// Texts with characters outside the tables are ordered by upper-case code point behind all others. < 0, 0, >
/// 0.
[[nodiscard]] int compareText(std::string_view a, std::string_view b, Version version);

/// Appends bytes that compare, as unsigned bytes, like compareText() orders the texts (of up to 255
/// characters). No text's bytes are the beginning of another's, so more may follow.
void appendTextOrder(KeyBytes &out, std::string_view text, Version version);

/// Why an index on this column cannot be kept right, or "" when it can.
[[nodiscard]] std::string unkeyableReason(const Column &column, bool ascending, Version version);

} // namespace jet
