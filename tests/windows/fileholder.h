#pragma once

#include <QProcess>
#include <QStringList>

namespace outpost
{

// Another program that holds the file open, for a time or until this object is destroyed. The test
// must define FILE_HOLDER as the path of fileholder.cpp's program.
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
