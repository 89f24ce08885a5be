#include "common/ui/combo_box.h"

#include <QWheelEvent>

namespace ui {

ComboBox::ComboBox(QWidget *parent)
    : QComboBox(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QComboBox::activated, this, &ComboBox::clicked);
}

void ComboBox::addEntry(const QString &text, std::int32_t number)
{
    const int selected = currentIndex();
    addItem(text, number);
    setCurrentIndex(selected);
}

std::int32_t ComboBox::entryData(int index) const
{
    return itemData(index).toInt();
}

std::optional<std::int32_t> ComboBox::selectedData() const
{
    if (currentIndex() < 0)
        return std::nullopt;
    return entryData(currentIndex());
}

void ComboBox::click(int index)
{
    setCurrentIndex(index);
    emit clicked();
}

void ComboBox::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

} // namespace ui

void Set_Combo(ui::ComboBox *combo, std::int32_t value)
{
    for (int index = 0; index < combo->count(); ++index) {
        if (combo->entryData(index) == value) {
            combo->click(index);
            return;
        }
    }
}
