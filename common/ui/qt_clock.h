// The clock of this machine.
#pragma once

#include "common/seams.h"

namespace ui {

class QtClock : public Clock
{
public:
    [[nodiscard]] Date today() const override;
    [[nodiscard]] Date now() const override;
    void pause(double seconds) override;
};

} // namespace ui
