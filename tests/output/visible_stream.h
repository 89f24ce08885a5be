// A printer stream as text that can be read and reviewed: what is not plain ASCII stands as "<1B>", and a
// line ends behind every LF and every paper advance. No two streams look the same.
#pragma once

#include "tests/support/files.h"

inline QByteArray visibleStream(const QByteArray &bytes)
{
    QByteArray text;
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        const char byte = bytes[at];
        if (byte >= ' ' && byte <= '~' && byte != '<')
            text += byte;
        else
            text += '<' + QByteArray(1, byte).toHex().toUpper() + '>';
        const bool advanced = at >= 2 && bytes.sliced(at - 2, 2) == QByteArray("\x1bJ");
        if (byte == '\n' || advanced)
            text += '\n';
    }
    return text + '\n';
}

/// The stream that looks so.
inline QByteArray streamOf(const QByteArray &visible)
{
    QByteArray bytes;
    for (qsizetype at = 0; at < visible.size(); ++at) {
        if (visible[at] == '<') {
            bytes += QByteArray::fromHex(visible.sliced(at + 1, 2));
            at += 3;
        } else if (visible[at] != '\n') {
            bytes += visible[at];
        }
    }
    return bytes;
}

inline QByteArray golden(const char *name)
{
    return fileBytes(std::string(GOLDEN_FOLDER) + "/" + name + ".txt");
}

/// Compares line by line, so that a difference is shown where it is.
inline void compareLines(const QByteArray &text, const QByteArray &expected)
{
    const auto lines = text.split('\n');
    const auto wanted = expected.split('\n');
    for (qsizetype line = 0; line < std::min(lines.size(), wanted.size()); ++line)
        QCOMPARE(lines[line], wanted[line]);
    QCOMPARE(lines.size(), wanted.size());
}

inline void compareStream(const QByteArray &bytes, const QByteArray &expected)
{
    compareLines(visibleStream(bytes), expected);
}
