#include "data/connection_string.h"

#include "common/errors.h"
#include "common/format.h"
#include "data/schema.h"

namespace data {

namespace {

constexpr std::string_view kJetProvider = "MICROSOFT.JET.OLEDB.";

/// Takes the text up to the next semicolon from the front of `rest`.
std::string_view takePart(std::string_view &rest)
{
    const std::size_t end = rest.find(';');
    const std::string_view part = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    return part;
}

} // namespace

std::string fileConnectionString(const std::string &file)
{
    return "Provider=Microsoft.jet.oledb.3.51; Data Source=" + file +
           ";Jet OLEDB:Database Password=" + std::string(schema::kPassword);
}

ConnectionTarget parseConnectionString(std::string_view text)
{
    ConnectionTarget target;
    bool jet = false;
    while (!text.empty()) {
        const std::string_view part = takePart(text);
        const std::size_t equals = part.find('=');
        if (equals == std::string_view::npos)
            continue;
        const std::string_view name = trimmed(part.substr(0, equals));
        const std::string_view value = trimmed(part.substr(equals + 1));
        if (equalNoCase(name, "Provider")) {
            jet = upperText(value).starts_with(kJetProvider);
        } else if (equalNoCase(name, "Data Source")) {
            target.file = value;
        } else if (equalNoCase(name, "DSN")) {
            target.dataSource = value;
        } else if (equalNoCase(name, "PWD") || equalNoCase(name, "Jet OLEDB:Database Password")) {
            target.password = value;
        }
    }
    const bool namesFile = jet && !target.file.empty() && target.dataSource.empty();
    const bool namesSource = !jet && !target.dataSource.empty() && target.file.empty();
    if (!namesFile && !namesSource) {
        throw RunTimeError(ErrorNumber::StatementNotUnderstood,
                           "The connection string names neither an Access file nor an ODBC data source.");
    }
    return target;
}

} // namespace data
