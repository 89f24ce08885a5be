#include "output/libreoffice/wire.h"

#include "common/errors.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace output::wire {

namespace {

using Clock = std::chrono::steady_clock;

/// A message that claims to be longer is none.
constexpr std::uint32_t kLongest = 1U << 30U;

[[noreturn]] void failBroken()
{
    throw AppError(ErrorNumber::SpreadsheetProgram, "The spreadsheet program gave a broken answer.");
}

enum class CellKind : std::uint8_t { Empty, Number, Text };

/// Waits until the socket can be read or written.
Outcome await(int socket, short events, const Patience &patience)
{
    for (;;) {
        pollfd waiting{socket, events, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(patience.slice.count()));
        if (ready > 0)
            return Outcome::Done; // Also an ended connection: the call that follows tells.
        if (ready < 0 && errno != EINTR)
            return Outcome::Ended;
        if (Clock::now() >= patience.until)
            return Outcome::TimedOut;
        if (!patience.goOn())
            return Outcome::Ended;
    }
}

/// Moves `size` bytes with `call`, which is send() or recv().
template <class Byte, class Call>
Outcome transfer(int socket, Byte *data, std::size_t size, short events, const Patience &patience, Call call)
{
    while (size > 0) {
        const ssize_t moved = call(data, size);
        if (moved > 0) {
            data += moved;
            size -= static_cast<std::size_t>(moved);
        } else if (moved == 0 || (errno != EAGAIN && errno != EINTR)) {
            return Outcome::Ended;
        } else if (const Outcome outcome = await(socket, events, patience); outcome != Outcome::Done) {
            return outcome;
        }
    }
    return Outcome::Done;
}

Outcome sendBytes(int socket, const char *data, std::size_t size, const Patience &patience)
{
    return transfer(socket, data, size, POLLOUT, patience, [socket](const char *from, std::size_t count) {
        return ::send(socket, from, count, MSG_DONTWAIT | MSG_NOSIGNAL);
    });
}

Outcome receiveBytes(int socket, char *data, std::size_t size, const Patience &patience)
{
    return transfer(socket, data, size, POLLIN, patience, [socket](char *into, std::size_t count) {
        return ::recv(socket, into, count, MSG_DONTWAIT);
    });
}

} // namespace

Message &Message::put(std::uint8_t byte)
{
    append(&byte, sizeof byte);
    return *this;
}

Message &Message::put(std::int32_t number)
{
    append(&number, sizeof number);
    return *this;
}

Message &Message::put(double number)
{
    append(&number, sizeof number);
    return *this;
}

Message &Message::put(std::string_view text)
{
    put(static_cast<std::int32_t>(text.size()));
    append(text.data(), text.size());
    return *this;
}

Message &Message::put(const CellBlock &block)
{
    put(std::int32_t{block.rows()}).put(std::int32_t{block.columns()});
    for (int row = 0; row < block.rows(); ++row) {
        for (int column = 0; column < block.columns(); ++column) {
            const Cell &cell = block.at(row, column);
            put(static_cast<std::uint8_t>(cell.index())); // The alternatives stand in the order of CellKind.
            if (const auto *number = std::get_if<double>(&cell)) {
                put(*number);
            } else if (const auto *text = std::get_if<std::string>(&cell)) {
                put(std::string_view(*text));
            }
        }
    }
    return *this;
}

std::uint8_t Message::byte()
{
    std::uint8_t value = 0;
    take(&value, sizeof value);
    return value;
}

std::int32_t Message::number()
{
    std::int32_t value = 0;
    take(&value, sizeof value);
    return value;
}

double Message::real()
{
    double value = 0;
    take(&value, sizeof value);
    return value;
}

std::string Message::text()
{
    const std::int32_t size = number();
    if (size < 0 || static_cast<std::size_t>(size) > m_bytes.size() - m_at)
        failBroken();
    std::string value(static_cast<std::size_t>(size), '\0');
    take(value.data(), value.size());
    return value;
}

CellBlock Message::block()
{
    const std::int32_t rows = number();
    const std::int32_t columns = number();
    // Every cell takes at least one byte.
    const auto room = static_cast<std::int64_t>(m_bytes.size() - m_at);
    if (rows < 0 || columns < 0 || std::int64_t{rows} * columns > room)
        failBroken();
    CellBlock block(rows, columns);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            switch (static_cast<CellKind>(byte())) {
            case CellKind::Empty:
                break;
            case CellKind::Number:
                block.at(row, column) = real();
                break;
            case CellKind::Text:
                block.at(row, column) = text();
                break;
            }
        }
    }
    return block;
}

void Message::append(const void *data, std::size_t size)
{
    m_bytes.append(static_cast<const char *>(data), size);
}

void Message::take(void *data, std::size_t size)
{
    if (size > m_bytes.size() - m_at)
        failBroken();
    std::memcpy(data, m_bytes.data() + m_at, size);
    m_at += size;
}

Outcome send(int socket, const Message &message, const Patience &patience)
{
    const auto size = static_cast<std::uint32_t>(message.bytes().size());
    std::string frame(reinterpret_cast<const char *>(&size), sizeof size);
    frame += message.bytes();
    return sendBytes(socket, frame.data(), frame.size(), patience);
}

Outcome receive(int socket, Message &message, const Patience &patience)
{
    std::uint32_t size = 0;
    Outcome outcome = receiveBytes(socket, reinterpret_cast<char *>(&size), sizeof size, patience);
    if (outcome != Outcome::Done)
        return outcome;
    if (size > kLongest)
        return Outcome::Ended;
    std::string bytes(size, '\0');
    outcome = receiveBytes(socket, bytes.data(), bytes.size(), patience);
    message = Message(std::move(bytes));
    return outcome;
}

bool isHungUp(int socket)
{
    pollfd state{socket, 0, 0};
    return ::poll(&state, 1, 0) > 0;
}

} // namespace output::wire
