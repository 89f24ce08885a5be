// Remembers what would have been started, and that the program would have ended.
#pragma once

#include "common/seams.h"

class FakeShell : public Shell
{
public:
    struct Command
    {
        std::string program;
        std::vector<std::string> arguments;
        std::string folder;
    };

    void start(const std::string &program, const std::vector<std::string> &arguments,
               const std::string &folder) override
    {
        started.push_back({program, arguments, folder});
    }
    void endProgram() override { m_ended = true; }
    [[nodiscard]] bool ended() const override { return m_ended; }

    std::vector<Command> started;

private:
    bool m_ended = false;
};
