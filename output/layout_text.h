// Texts of a layout with fields in them: "Ord.No. : [OrdNo], {Title}".
#pragma once

#include "output/layout.h"

#include <stdexcept>

namespace output {

/// Why a text, number or name of a layout is not understood; the reader adds file and line.
class LayoutMistake : public std::runtime_error
{
public:
    explicit LayoutMistake(const QString &reason)
        : std::runtime_error(reason.toStdString())
    {}
};

/// Takes a text apart: `[Column]`, `{Title}`, `{Sum:Column}` and so on are fields, `[[` and `{{` the bracket
/// itself. Throws LayoutMistake.
[[nodiscard]] TextLine parseLayoutText(const QString &text);

} // namespace output
