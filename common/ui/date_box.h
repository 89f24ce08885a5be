// DateBox: a date field that shows "05/Apr/2005" with English month names on every machine.
#pragma once

#include "common/date.h"

#include <QDateEdit>

namespace ui {

class DateBox : public QDateEdit
{
    Q_OBJECT

public:
    explicit DateBox(QWidget *parent = nullptr);

    void setDay(Date day);
    /// The shown day at midnight.
    [[nodiscard]] Date day() const;

protected:
    /// The wheel changes the date only when the field has the focus.
    void focusInEvent(QFocusEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace ui
