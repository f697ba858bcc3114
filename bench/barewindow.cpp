// The minimum work of a program with a table in its window.

#include <QApplication>
#include <QMainWindow>
#include <QTableWidget>

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    QMainWindow window;
    auto *table = new QTableWidget(0, 5, &window);
    table->setHorizontalHeaderLabels({QStringLiteral("Time"), QStringLiteral("SNR"),
                                      QStringLiteral("DT"), QStringLiteral("DF"),
                                      QStringLiteral("Message")});
    window.setCentralWidget(table);
    window.resize(345, 245);
    window.show();
    return QApplication::exec();
}
