// Between the program's UTF-8 texts and the toolkit's.
#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace ui {

[[nodiscard]] inline QString shown(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

[[nodiscard]] inline std::string typed(const QString &text)
{
    return text.toStdString();
}

} // namespace ui
