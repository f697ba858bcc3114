// A program without a console, like the station: writes the arguments of main() to the file named
// by the first one, one per line, and exits with code 7.

#include <QByteArray>
#include <QFile>
#include <qt_windows.h>
#include <qwindowdefs.h> // renames main() to what Qt's entry point calls

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
