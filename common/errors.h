// Errors that the program reports to its user.
//
// Everything that can go wrong outside this program (a server that is gone, a damaged file, a statement that
// names an unknown table, a number that does not fit) is thrown as an AppError or one of the four kinds below
// it. "Not found" is not an error: it is an empty recordset, an empty std::optional, or a code of 0.
#pragma once

#include <concepts>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// The numbers that the user sees in the error box and that code may test.
enum class ErrorNumber : int {
    Overflow = 6,
    DivisionByZero = 11,
    TypeMismatch = 13,
    UnreachableServer = 52, ///< the folder that `ServerPath` names cannot be reached; start-up tests for it
    FileNotFound = 53,
    DiskFull = 61,
    PathAccess = 75,      ///< a file or folder exists but may not be opened, read or written
    ObjectClosed = 3704,  ///< a connection or recordset is used that is not open
    NoCurrentRow = 3021,  ///< a field is read or written where the recordset has no current row
    DuplicateKey = 3022,  ///< the change would give two rows of a unique index the same key
    PasswordWrong = 3031, ///< the database password does not open the file
    RequiredField = 3314, ///< a column or index that must hold a value would be left empty
    StatementNotUnderstood = 3075,
    TableNotFound = 3078,
    FieldNotFound = 3265,
    TableReadOnly = 3027,  ///< the table holds something this program does not know how to keep right
    TableInUse = 3009,     ///< another workstation holds the table or page
    RelationBroken = 3200, ///< the change would break an enforced relationship
    FieldTooSmall = 3163,  ///< the value does not fit the column
    RowTooLarge = 3047,
    FileTooLarge = 3001, ///< the file has reached the limit of its format
    ObjectExists = 3010,
    CorruptFile = 3343,        ///< bytes that cannot be what they should be, or no Access file at all
    DataSourceNotFound = 3146, ///< no ODBC data source of that name is registered
    InternalFault = 51,
    SheetNotFound = 9,        ///< a workbook has no worksheet of the wanted name
    SpreadsheetProgram = 429, ///< the spreadsheet program is missing, does not answer, or has ended
    Workbook = 1004,          ///< a file is no workbook, is damaged, protected or in use
};

/// A failure with a number that code can test and a sentence that a storekeeper can read and act on.
class AppError : public std::runtime_error
{
public:
    AppError(ErrorNumber number, const std::string &sentence)
        : std::runtime_error(sentence)
        , m_number(number)
    {}

    [[nodiscard]] ErrorNumber number() const { return m_number; }

    /// What a support person asks for first: file, table, kind of statement.
    struct Detail
    {
        std::string label;
        std::string text;
    };
    [[nodiscard]] const std::vector<Detail> &details() const { return m_details; }
    /// Each place on the way up adds what it knows; what a lower one has said already stays.
    void addDetail(const std::string &label, const std::string &text)
    {
        for (const Detail &known : m_details) {
            if (known.label == label)
                return;
        }
        m_details.push_back({label, text});
    }

    /// What was and was not written, and what to do next, in a storekeeper's words; "" when nobody said so.
    [[nodiscard]] const std::string &consequence() const { return m_consequence; }
    void setConsequence(const std::string &words)
    {
        if (m_consequence.empty())
            m_consequence = words;
    }

private:
    ErrorNumber m_number;
    std::vector<Detail> m_details;
    std::string m_consequence;
};

/// A file cannot be opened, read, written or locked.
class FileError : public AppError
{
public:
    using AppError::AppError;
};

/// The bytes of a file cannot be what they should be. The sentence names the page and the reason.
class CorruptFile : public AppError
{
public:
    explicit CorruptFile(const std::string &sentence)
        : AppError(ErrorNumber::CorruptFile, sentence)
    {}
};

/// A statement, table or field name that is not understood.
class SqlError : public AppError
{
public:
    using AppError::AppError;
};

/// Overflow, type mismatch, division by zero, and operations on objects that are not open.
class RunTimeError : public AppError
{
public:
    using AppError::AppError;
};

/// Runs a piece of work whose failure means something to the user: an AppError leaves it with the words for
/// what was and was not written. The innermost words stay.
template <std::invocable Work>
decltype(auto) withConsequence(const std::string &words, Work &&work)
{
    try {
        return std::forward<Work>(work)();
    } catch (AppError &error) {
        error.setConsequence(words);
        throw;
    }
}

/// Runs one statement. An AppError ends that statement only and gives false; any other exception is a
/// programming mistake or an exhausted machine and propagates.
///
/// This and attemptOr() are the only places that swallow errors: one statement per call, so that the
/// statements behind a failing one still run.
template <std::invocable Statement>
bool attempt(Statement &&statement)
{
    try {
        std::forward<Statement>(statement)();
        return true;
    } catch (const AppError &) {
        return false;
    }
}

/// The value of one expression, or `fallback` when it fails with an AppError.
template <class T, std::invocable Expression>
T attemptOr(T fallback, Expression &&expression)
{
    try {
        return std::forward<Expression>(expression)();
    } catch (const AppError &) {
        return fallback;
    }
}
