// Other programs, and the end of this one.
#pragma once

#include "common/seams.h"

namespace ui {

class QtShell : public Shell
{
public:
    void start(const std::string &program, const std::vector<std::string> &arguments,
               const std::string &folder) override;
    /// Leaves every event loop. Boxes and windows that are asked for afterwards do not come up, so that
    /// nothing else can be done while the callers return.
    void endProgram() override;
    [[nodiscard]] bool ended() const override { return m_ended; }

private:
    bool m_ended = false;
};

} // namespace ui
