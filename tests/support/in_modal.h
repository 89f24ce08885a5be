// Driving a modal form from a test.
#pragma once

#include <QApplication>
#include <QTest>
#include <QTimer>

#include <concepts>

/// Acts on the modal form of type Form that `open` brings up and waits for. The test fails when another or no
/// form came up; a form that is still open after the act is closed, so that the test never hangs.
template <class Form, std::invocable Open, std::invocable<Form &> Act>
void inModal(Open &&open, Act &&act)
{
    bool met = false;
    QTimer::singleShot(0, qApp, [&] {
        QWidget *modal = QApplication::activeModalWidget();
        auto *form = qobject_cast<Form *>(modal);
        met = form != nullptr;
        if (form)
            act(*form);
        if (QWidget *left = QApplication::activeModalWidget(); left && left == modal)
            left->close();
    });
    open();
    QVERIFY2(met, "the expected modal form did not come up");
}
