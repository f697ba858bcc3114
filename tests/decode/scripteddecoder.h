#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace outpost
{

// An installed decoder whose behaviour is a shell script: "jt9" beside "wsjtx" in a folder of its
// own, named by the environment. In the script, $here is a folder for files that the test reads,
// $slot the name of the worker's scratch folder; $5, $7 and $8 are the low and high Hz and the WAV
// file.
class ScriptedDecoder
{
public:
    explicit ScriptedDecoder(const QString &script = {})
    {
        QDir(root()).mkdir(QStringLiteral("bin"));
        QDir(root()).mkdir(QStringLiteral("left"));
        writeProgram(bin(QStringLiteral("wsjtx")), QStringLiteral("exit 0"));
        setScript(script);
        qputenv("PELQ_JT9_PATH", path().toLocal8Bit());
    }
    ~ScriptedDecoder() { qunsetenv("PELQ_JT9_PATH"); }
    Q_DISABLE_COPY(ScriptedDecoder)

    void setScript(const QString &script) const { writeProgram(path(), script); }

    QString path() const { return bin(QStringLiteral("jt9")); }
    QString bin(const QString &name) const { return root() + QStringLiteral("/bin/") + name; }
    QString left(const QString &name) const { return root() + QStringLiteral("/left/") + name; }

    QByteArray readLeft(const QString &name) const
    {
        QFile file(left(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // Names of the files that the decoder has left, sorted.
    QStringList allLeft() const { return QDir(left(QString())).entryList(QDir::Files, QDir::Name); }

    void writeProgram(const QString &file, const QString &script) const
    {
        QFile program(file);
        if (!program.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            qFatal("cannot write the scripted decoder");
        }
        program.write("#!/bin/sh\nhere='" + left(QString()).toLocal8Bit() + "'; slot=${PWD##*/}\n" +
                      script.toUtf8() + "\n");
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

private:
    QString root() const { return folder.path(); }

    QTemporaryDir folder;
};

} // namespace outpost
