// Formula texts such as "Head ='ORDER FORM'".
#pragma once

#include <QString>

#include <string>
#include <utility>

namespace output {

/// Name (in lower case) and text of a formula. The text stands between single or double quotes; two of them
/// inside it are one. Throws RunTimeError(StatementNotUnderstood) on anything else: a quote of the text that
/// is not doubled ends it, and what follows is not understood.
[[nodiscard]] std::pair<QString, QString> parseFormula(const std::string &formula);

} // namespace output
