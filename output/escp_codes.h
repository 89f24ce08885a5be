// The codes of an ESC/P stream by name and length.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace output::escp {

/// Bytes of the code at the start of `bytes`: 1 for a control character, for an escape sequence with its
/// parameters and data, as far as they are there. Sequences that are in no manual count as ESC and one
/// letter.
[[nodiscard]] std::size_t codeLength(std::string_view bytes);

/// "BEL", "ESC E", "ESC <07>".
[[nodiscard]] std::string codeName(std::string_view code);

} // namespace output::escp
