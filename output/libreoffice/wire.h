// Wire: the messages between the program and velk-calc, its hand in the spreadsheet program.
//
// A message is a request or its answer: a length of four bytes and that many bytes, in this machine's own
// byte order, as both ends run on it. Reading takes the parts in the order in which they were put; a message
// that ends early throws AppError(SpreadsheetProgram).
#pragma once

#include "output/spreadsheet.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace output::wire {

/// Every request begins with one of these.
enum class Request : std::uint8_t {
    Hello, ///< answered when the office is there and has answered itself
    Open,  ///< text file, number 1 for writing; closes what was open
    Sheet, ///< text name
    Read,  ///< text sheet, numbers row, column, rows, columns; answer: block
    Write, ///< text sheet, numbers row, column, block
    Save,
    Close,
};

/// Every answer begins with one of these.
enum class Answer : std::uint8_t {
    Done,
    Failed, ///< number of the error, text sentence; the office goes on
    Lost,   ///< as Failed, but the office is gone and velk-calc ends
};

class Message
{
public:
    Message() = default;
    explicit Message(std::string bytes)
        : m_bytes(std::move(bytes))
    {}

    Message &put(std::uint8_t byte);
    Message &put(std::int32_t number);
    Message &put(double number);
    Message &put(std::string_view text);
    Message &put(const CellBlock &block);

    [[nodiscard]] std::uint8_t byte();
    [[nodiscard]] std::int32_t number();
    [[nodiscard]] double real();
    [[nodiscard]] std::string text();
    [[nodiscard]] CellBlock block();

    [[nodiscard]] const std::string &bytes() const { return m_bytes; }

private:
    void append(const void *data, std::size_t size);
    void take(void *data, std::size_t size);

    std::string m_bytes;
    std::size_t m_at = 0;
};

/// What came of sending or receiving. `Ended`: the other end is gone, or the wait was given up.
enum class Outcome { Done, Ended, TimedOut };

/// How long to wait.
struct Patience
{
    std::chrono::steady_clock::time_point until = std::chrono::steady_clock::time_point::max();
    /// Asked after every slice of the wait and after every signal; false ends it.
    std::function<bool()> goOn = [] { return true; };
    std::chrono::milliseconds slice{20};
};

/// Both work on a socket.
[[nodiscard]] Outcome send(int socket, const Message &message, const Patience &patience);
[[nodiscard]] Outcome receive(int socket, Message &message, const Patience &patience);

/// True when the other end is gone.
[[nodiscard]] bool isHungUp(int socket);

} // namespace output::wire
