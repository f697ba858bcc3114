// Prints the text on the display's clipboard. No tool in the tests' packages does that.

#include <QClipboard>
#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    QTextStream(stdout) << QGuiApplication::clipboard()->text();
    return 0;
}
