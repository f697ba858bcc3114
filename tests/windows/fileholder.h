#pragma once

#include <QProcess>
#include <QStringList>

namespace outpost
{

// Another program that has the file open, for so long or until it goes out of scope. The test needs
// FILE_HOLDER, the path of fileholder.cpp's program.
class FileHolder
{
public:
    FileHolder(const QString &path, int forMs, const QStringList &more = {})
    {
        program.start(QStringLiteral(FILE_HOLDER),
                      QStringList{path, QString::number(forMs)} + more);
        holds = program.waitForReadyRead() && program.readAll().startsWith("held");
    }
    ~FileHolder()
    {
        program.kill();
        program.waitForFinished();
    }
    Q_DISABLE_COPY(FileHolder)

    bool holds = false;

private:
    QProcess program;
};

} // namespace outpost
