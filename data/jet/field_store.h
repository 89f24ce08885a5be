// From values of any kind to the fields of a row: conversion to the column's type, limits, stored bytes.
#pragma once

#include "data/jet/row_codec.h"
#include "data/jet/text_codec.h"
#include "data/jet/types.h"

namespace jet {

/// The value as a column of this type holds it. Throws RunTimeError(Overflow, TypeMismatch) and
/// AppError(FieldTooSmall) with the column's name.
[[nodiscard]] Value fitted(const Column &column, const Value &value, const TextCodec &codec,
                           const Format &format);

/// The stored bytes of a fitted value; for a memo or OLE column the bytes of the long value, without a
/// descriptor.
[[nodiscard]] StoredField storedField(const Column &column, const Value &value, const TextCodec &codec);

/// Appends a little-endian number of `size` bytes.
void appendNumber(Bytes &out, std::uint64_t value, std::size_t size);

} // namespace jet
