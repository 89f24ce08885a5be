// The peer of first-window: an empty window of the toolkit and nothing else.

#include "bench/first_window.h"

int main(int argumentCount, char **arguments)
{
    QApplication application(argumentCount, arguments);
    bench::FirstWindow watch;
    application.installEventFilter(&watch);
    QWidget window;
    window.show();
    return QApplication::exec();
}
