#include "output/report_formula.h"

#include "common/errors.h"

#include <QRegularExpression>

namespace output {

std::pair<QString, QString> parseFormula(const std::string &formula)
{
    static const QRegularExpression rule(
        QStringLiteral("^\\s*(\\w+)\\s*=\\s*(?:'((?:[^']|'')*)'|\"((?:[^\"]|\"\")*)\")\\s*$"));
    const QRegularExpressionMatch match = rule.match(QString::fromStdString(formula));
    if (!match.hasMatch())
        throw RunTimeError(ErrorNumber::StatementNotUnderstood,
                           "The report formula " + formula + " is not understood.");
    const QString name = match.captured(1).toLower();
    if (match.capturedStart(2) >= 0)
        return {name, match.captured(2).replace(QLatin1String("''"), QLatin1String("'"))};
    return {name, match.captured(3).replace(QLatin1String("\"\""), QLatin1String("\""))};
}

} // namespace output
