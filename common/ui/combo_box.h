// ComboBox: a drop-down list whose entries carry a number.
#pragma once

#include <QComboBox>

#include <cstdint>
#include <optional>

namespace ui {

class ComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit ComboBox(QWidget *parent = nullptr);

    /// Appends an entry. What was selected stays selected: filling an empty list selects nothing.
    void addEntry(const QString &text, std::int32_t number);
    [[nodiscard]] std::int32_t entryData(int index) const;
    /// The number of the selected entry; nothing when no entry is selected.
    [[nodiscard]] std::optional<std::int32_t> selectedData() const;
    /// Selects an entry as a user does: the click handler runs.
    void click(int index);

signals:
    /// An entry was chosen, by the user or through click(); also when it was the selected one before.
    void clicked();

protected:
    /// The wheel moves the list only when it has the focus, else scrolling past it would change an order.
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace ui

/// Selects the first entry that carries the value, as a user's choice does: the list's click handler runs.
/// When none matches, nothing changes.
void Set_Combo(ui::ComboBox *combo, std::int32_t value);
