// A program as the station itself is one, without a console: leaves the arguments that main
// received in the file that the first one names, one a line, and ends with exit code 7.

#include <QByteArray>
#include <QFile>
#include <qt_windows.h>
#include <qwindowdefs.h> // main's name, where the toolkit's entry point calls it

int main(int argc, char *argv[])
{
    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::WriteOnly)) {
        return 1;
    }
    for (int i = 1; i < argc; ++i) {
        file.write(QByteArray(argv[i]) + '\n');
    }
    file.write(argv[argc] == nullptr ? "end" : "no end");
    return 7;
}
