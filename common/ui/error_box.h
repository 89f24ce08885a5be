// The box for an error that no procedure handles.
#pragma once

#include "common/errors.h"

#include <QMessageBox>

namespace ui {

/// Number and sentence; below them what was and was not written and what to do next; folded away the details
/// that a support person asks for, with a button that copies all of it.
class ErrorBox : public QMessageBox
{
    Q_OBJECT

public:
    ErrorBox(const AppError &error, const QString &title, QWidget *parent);

    /// Everything the box says, as plain text.
    [[nodiscard]] QString wholeText() const;

private:
    void giveDetailsAKey();
    void copy() const;
};

} // namespace ui
