// Reads layout files; docs/report-layouts.md describes them.
#pragma once

#include "common/errors.h"
#include "output/layout.h"

namespace output {

/// A layout that cannot be used; the sentence names file, line and reason.
class LayoutError : public CorruptFile
{
public:
    LayoutError(const QString &file, qint64 line, const QString &reason);
};

/// `path` as the system writes paths. Throws FileError when the file cannot be read, LayoutError when it is
/// no usable layout.
[[nodiscard]] Layout readLayout(const std::string &path);

} // namespace output
