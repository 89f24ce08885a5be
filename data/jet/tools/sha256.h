// SHA-256 of bytes, for naming long values in a dump.
#pragma once

#include <cstddef>
#include <span>
#include <string>

/// 64 lower-case hexadecimal digits.
[[nodiscard]] std::string sha256(std::span<const std::byte> bytes);
