// Controls that bear their name from the start.
#pragma once

#include <QWidget>

#include <utility>

namespace ui {

/// A child of `parent` with an object name; further arguments go to the control's constructor in front of the
/// parent.
template <class Control, class... Arguments>
Control *create(const char *name, QWidget *parent, Arguments &&...arguments)
{
    auto *control = new Control(std::forward<Arguments>(arguments)..., parent);
    control->setObjectName(QLatin1String(name));
    return control;
}

} // namespace ui
