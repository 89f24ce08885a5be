// Connecting controls to the handlers of a form.
#pragma once

#include "common/errors.h"

#include <QObject>

namespace ui {

/// Runs a handler's body. An AppError ends it and is shown as a run-time error; the form stays usable. For
/// event filters and event overrides, which cannot be connected.
template <class Form, std::invocable Handler>
void guarded(Form *form, Handler &&handler)
{
    try {
        std::forward<Handler>(handler)();
    } catch (const AppError &error) {
        form->dialogs().runTimeError(error);
    }
}

/// Connects a control to a handler of the form; an AppError ends the handler and is shown as a run-time
/// error. The handler takes as many of the signal's arguments as it wants. The form offers `Dialogs
/// &dialogs()`.
template <class Sender, class Signal, class Form, class... Arguments>
void on(Sender *sender, Signal signal, Form *form, void (Form::*handler)(Arguments...))
{
    QObject::connect(sender, signal, form, [form, handler](Arguments... arguments) {
        guarded(form, [&] { (form->*handler)(arguments...); });
    });
}

} // namespace ui
