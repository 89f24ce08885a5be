// What velk-setup found, as plain sentences.
#pragma once

#include <string>
#include <vector>

namespace setup {

class Findings
{
public:
    struct Line
    {
        enum class Kind { Heading, Good, Wanting };
        Kind kind = Kind::Good;
        std::string text;
    };

    void heading(std::string text) { m_lines.push_back({Line::Kind::Heading, std::move(text)}); }
    void good(std::string text) { m_lines.push_back({Line::Kind::Good, std::move(text)}); }
    /// Something without which a part of the program does not work, and what to do about it.
    void wanting(std::string text)
    {
        m_lines.push_back({Line::Kind::Wanting, std::move(text)});
        ++m_wanting;
    }
    void add(bool isGood, std::string whenGood, std::string otherwise)
    {
        isGood ? good(std::move(whenGood)) : wanting(std::move(otherwise));
    }

    [[nodiscard]] const std::vector<Line> &lines() const { return m_lines; }
    [[nodiscard]] int wantingCount() const { return m_wanting; }

private:
    std::vector<Line> m_lines;
    int m_wanting = 0;
};

} // namespace setup
