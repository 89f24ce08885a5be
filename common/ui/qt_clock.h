// The clock of this machine.
#pragma once

#include "common/seams.h"

namespace ui {

class QtClock : public Clock
{
public:
    /// `shell` says when the program has ended; it must outlive the clock.
    explicit QtClock(const Shell &shell)
        : m_shell(shell)
    {}

    [[nodiscard]] Date today() const override;
    [[nodiscard]] Date now() const override;
    void pause(double seconds) override;
    [[nodiscard]] bool stopped() const override { return m_shell.ended(); }

private:
    const Shell &m_shell;
};

} // namespace ui
