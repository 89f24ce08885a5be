// What a connection string names: an Access file or an ODBC data source, and the password.
#pragma once

#include <string>
#include <string_view>

namespace data {

struct ConnectionTarget
{
    std::string file;       ///< as the system writes paths; "" when a data source is named
    std::string dataSource; ///< "" when a file is named
    std::string password;
};

/// Reads "Provider=Microsoft.jet.oledb.3.51; Data Source=FILE;Jet OLEDB:Database Password=P" or
/// "DSN=NAME;UID=;PWD=P;". Names of parts are compared without regard to case; blanks around a part and empty
/// parts are ignored, unknown parts skipped. Throws RunTimeError(StatementNotUnderstood) when neither form is
/// met.
[[nodiscard]] ConnectionTarget parseConnectionString(std::string_view text);

/// The first of these forms, for a file that has the installation's password.
[[nodiscard]] std::string fileConnectionString(const std::string &file);

} // namespace data
