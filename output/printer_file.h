// The file that takes a printer stream: bytes go out exactly as they are given.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace output {

class PrinterFile
{
public:
    /// Deletes the file and begins it anew. `path` as the system writes paths. Throws FileError.
    void open(const std::string &path);
    [[nodiscard]] bool isOpen() const { return m_stream.is_open(); }
    /// Throws FileError when the file is not open or does not take the bytes.
    void write(std::string_view bytes);
    void close();

private:
    void requireGood();

    std::ofstream m_stream;
    std::string m_path;
};

/// UTF-8 text as the printer's Windows-1252 bytes; "?" for a character that has no place there.
[[nodiscard]] std::string printerBytes(std::string_view text);
/// The other way round: Windows-1252 bytes as UTF-8 text.
[[nodiscard]] std::string printedText(std::string_view bytes);

} // namespace output
