// What can be told about a workbook's file from the outside, before a spreadsheet program sees it.
#pragma once

#include <optional>
#include <string>

namespace output {

enum class WorkbookKind { Excel97, Excel2007, OpenDocument };

/// The kind of workbook by the file's first bytes; its name means nothing. Throws FileError(FileNotFound,
/// PathAccess), and AppError(Workbook) when it is none of the three: LibreOffice would load a text as one.
[[nodiscard]] WorkbookKind workbookKind(const std::string &file);

} // namespace output
