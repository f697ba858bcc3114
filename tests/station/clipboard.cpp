// Prints the text on the clipboard of the display, which no tool of the test's packages does.

#include <QClipboard>
#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    QTextStream(stdout) << QGuiApplication::clipboard()->text();
    return 0;
}
